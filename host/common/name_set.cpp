#include "host/common/name_set.h"

#include <algorithm>
#include <array>

#include "vastra/equations/separator.h"

namespace vastra {
namespace {

constexpr int kMostShown = 60;     // bytes of a name in a message
constexpr int kMostCompared = 32;  // bytes of names that are compared

// The number of bytes to change, add, remove or exchange with the next one; more than most if it is larger.
int Distance(std::string_view a, std::string_view b, int most) {
  using CRow = std::array<int, kMostCompared + 1>;
  CRow before{}, last{}, row{};
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = static_cast<int>(j);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = static_cast<int>(i);
    int least = row[0];
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], before[j - 2] + 1);
      least = std::min(least, row[j]);
    }
    if (least > most) return least;
    before = last;
    last = row;
  }
  return last[b.size()];
}

}  // namespace

CString Quoted(const CString& name) {
  return name.GetLength() > kMostShown ? "\"" + name.Left(kMostShown) + "...\"" : "\"" + name + "\"";
}

const CString* CNearestName::Find(const CString& wrong, const CNameSet& names) {
  const int length = wrong.GetLength();
  if (length == 0 || length > kMostCompared) return nullptr;
  int most = (length + 1) / 3;  // a third of the letters
  const CString* nearest = nullptr;
  for (const CString* name : names.Ordered()) {
    if (std::abs(name->GetLength() - length) > most || name->GetLength() > kMostCompared) continue;
    if (--m_comparisonsLeft < 0) break;
    if (name->CompareNoCase(wrong) == 0) return name;
    const int distance = most == 0 ? 1 : Distance(wrong.View(), name->View(), most);
    if (distance > most) continue;
    nearest = name;
    most = distance - 1;
    if (most < 0) break;
  }
  return nearest;
}

CString NoVariable(const CString& name, const CString* near) {
  return "there is no variable " + Quoted(name) +
         (near ? "; did you mean " + Quoted(*near) + "?" : CString());
}

CStringArray AssignedNames(const CStringArray& equations) {
  CStringArray names;
  for (const CString& equation : equations)
    if (CString name; FindAssignedName(equation, name)) names.Add(name);
  return names;
}

}  // namespace vastra
