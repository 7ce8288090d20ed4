// Arbitrary bytes as the text of an equation editor. If they compile, both ways of execution give the same
// values.
#include <cstdio>
#include <cstdlib>

#include "tests/equations/both_machines.h"
#include "vastra/equations/separator.h"

namespace vastra {
namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

CStringArray Inputs() {
  CStringArray names;
  for (const char* name : {"a", "b", "c", "d"}) names.Add(name);
  return names;
}

const std::vector<CSampleValues>& Samples() {
  static const std::vector<CSampleValues> samples = [] {
    static constexpr float kValues[][4] = {
        {0.0f, -0.0f, 1.0f, -2.5f}, {1.1f, 4.7f, NAN, HUGE_VALF}, {-3e9f, 1e-40f, 255.0f, 0.0f}};
    std::vector<CSampleValues> all;
    for (const auto& values : kValues) {
      CSampleValues sample;
      for (const float value : values) sample.Add(value);
      all.push_back(sample);
    }
    return all;
  }();
  return samples;
}

// A name for each statement with a "=", and a position in the text for each divider.
void CheckCuts(const CString& text, const CStringArray& equations, const CStringArray& variables,
               const CArray<int, int>& positions) {
  Require(variables.GetSize() <= equations.GetSize());
  for (const int place : positions) Require(place >= 0 && place <= text.GetLength());
  for (int i = 0; i < equations.GetSize() && i < positions.GetSize(); ++i)
    Require(text.Mid(positions[i], equations[i].GetLength()) == equations[i]);
}

// A fault is in the statement, or at the ";" after it.
void CheckFault(const CEquationFault& fault, const CStringArray& equations) {
  if (fault.statement == 0) return;
  Require(fault.statement <= equations.GetSize());
  Require(fault.offset >= 0 && fault.offset <= equations[fault.statement - 1].GetLength());
}

void Check(const CString& text) {
  CStringArray equations, variables;
  CArray<int, int> positions;
  CEquationSeparator().Separate(text, equations, variables, positions);
  CheckCuts(text, equations, variables, positions);

  CEquationFault fault;
  const std::string difference = CompareMachines(Inputs(), equations, Samples(), fault);
  CheckFault(fault, equations);
  if (difference.empty()) return;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  vastra::Check(vastra::CString(reinterpret_cast<const char*>(data), size));
  return 0;
}
