#include "vastra/ui/screen_geometry.h"

#include <algorithm>

namespace vastra {
namespace {

// The begin of a range of that length, moved between low and high. The low end is kept if it is too long.
int Moved(int begin, int length, int low, int high) {
  return std::clamp(begin, low, std::max(low, high - length));
}

}  // namespace

CRect PutOnto(const CRect& screen, const CRect& wanted) {
  const CSize size = {std::min(wanted.Width(), screen.Width()), std::min(wanted.Height(), screen.Height())};
  return CRect::Of({Moved(wanted.left, size.cx, screen.left, screen.right),
                    Moved(wanted.top, size.cy, screen.top, screen.bottom)},
                   size);
}

CSize ScrolledSize(CSize contents, CSize room, CSize bars) {
  CSize size = contents;
  if (contents.cy > room.cy) size.cx += bars.cx;
  if (size.cx > room.cx) size.cy += bars.cy;
  return {std::min(size.cx, room.cx), std::min(size.cy, room.cy)};
}

}  // namespace vastra
