#include "vastra/equations/line_code.h"

#include <unordered_map>

namespace vastra {

std::vector<CFlatLine> FlatLines(const CLineCodeList& lines) {
  std::unordered_map<POSITION, int> places;
  int place = 0;
  for (POSITION pos = lines.GetHeadPosition(); pos; lines.GetNext(pos)) places[pos] = place++;

  std::vector<CFlatLine> flat;
  flat.reserve(places.size());
  for (const CLineCode& line : lines) {
    CFlatLine next;
    POSITION jump;
    line.Get(next.code, next.op1, next.op2, jump);
    const auto target = places.find(jump);
    next.jump = target == places.end() ? -1 : target->second;
    flat.push_back(next);
  }
  return flat;
}

}  // namespace vastra
