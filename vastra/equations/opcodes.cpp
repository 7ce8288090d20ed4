#include "vastra/equations/opcodes.h"

#include <algorithm>
#include <iterator>

namespace vastra {
namespace {

template <class Operation>
bool Compute(double op1, double op2, double& result) {
  if (Operation::IsUndefined(op1, op2)) return false;
  result = Operation::Result(op1, op2);
  return true;
}

constexpr COpcode kOpcodes[] = {
#define VASTRA_ROW(number, Name, spelling, count, result, undefined, words) \
  {number, count, spelling, words, Compute<COperation##Name>},
    VASTRA_OPERATIONS(VASTRA_ROW)
#undef VASTRA_ROW
        {opJumpIfZero, 1, "jump if zero", "", nullptr},
    {opJump, 0, "jump", "", nullptr},
};

}  // namespace

const COpcode* FindOpcode(int code) {
  const auto row = std::lower_bound(std::begin(kOpcodes), std::end(kOpcodes), code,
                                    [](const COpcode& opcode, int wanted) { return opcode.code < wanted; });
  return row != std::end(kOpcodes) && row->code == code ? row : nullptr;
}

const COpcode* GetOpcodes(std::size_t& count) {
  count = std::size(kOpcodes);
  return kOpcodes;
}

}  // namespace vastra
