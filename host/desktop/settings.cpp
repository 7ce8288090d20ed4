#include "host/desktop/settings.h"

#include <cstdio>

namespace vastra {
namespace {

CString RecentName(int index) { return "Recent" + CString(std::to_string(index)); }

}  // namespace

bool CSettings::GetPlace(const char* name, CRect& place) const {
  int x = 0, y = 0, cx = 0, cy = 0;
  if (std::sscanf(Get(name), "%d,%d,%d,%d", &x, &y, &cx, &cy) != 4 || cx <= 0 || cy <= 0) return false;
  place = CRect::Of({x, y}, {cx, cy});
  return true;
}

void CSettings::SetPlace(const char* name, const CRect& place) {
  CString value;
  value.Format("%d,%d,%d,%d", place.left, place.top, place.Width(), place.Height());
  Set(name, value);
}

CStringArray CSettings::Recent() const {
  CStringArray paths;
  for (int i = 0; i < kRecent; ++i)
    if (const CString path = Get(RecentName(i)); !path.IsEmpty()) paths.Add(path);
  return paths;
}

void CSettings::AddRecent(const CString& path) {
  CStringArray paths;
  paths.Add(path);
  for (const CString& former : Recent())
    if (FindIn(paths, former) < 0 && paths.GetSize() < kRecent) paths.Add(former);
  for (int i = 0; i < paths.GetSize(); ++i) Set(RecentName(i), paths[i]);
}

}  // namespace vastra
