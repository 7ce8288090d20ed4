#include "vastra/equations/separator.h"

#include <algorithm>

namespace vastra {

bool FindAssignedName(const CString& statement, CString& name) {
  const int equals = statement.Find('=');
  if (equals < 0) return false;
  name = statement.Left(equals);
  name.TrimLeft();
  name.TrimRight();
  name = name.Mid(std::max(name.ReverseFind(' '), name.ReverseFind('\n')) + 1);
  return true;
}

int CEquationSeparator::Separate(CString text, CStringArray& equations, CStringArray& variables,
                                 CArray<int, int>& positions) {
  positions.Add(0);
  for (int end = text.Find(';'); end >= 0; end = text.Find(';', end + 1)) positions.Add(end + 1);

  text.TrimRight();
  if (!text.IsEmpty() && text.Right(1) != ";") text += ';';
  int start = 0;
  for (int end = text.Find(';'); end >= 0; end = text.Find(';', start)) {
    const CString statement = text.Mid(start, end - start);
    CString name;
    if (FindAssignedName(statement, name)) variables.Add(name);
    equations.Add(statement);
    start = end + 1;
  }
  return 1;
}

}  // namespace vastra
