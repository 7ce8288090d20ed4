#include "vastra/ui/line_raster.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace vastra {
namespace {

// Clips the line from a to b to clip; false: nothing is left.
bool CutLine(const CRect& clip, CPoint& a, CPoint& b) {
  const double x = a.x, y = a.y, dx = b.x - x, dy = b.y - y;
  const struct {
    double speed, room;  // towards an edge
  } kEdges[] = {
      {-dx, x - clip.left}, {dx, clip.right - 1 - x}, {-dy, y - clip.top}, {dy, clip.bottom - 1 - y}};
  double from = 0, to = 1;
  for (const auto& [speed, room] : kEdges) {
    if (speed > 0) to = std::min(to, room / speed);
    if (speed < 0) from = std::max(from, room / speed);
    if (speed == 0 && room < 0) return false;
  }
  if (from > to) return false;
  const auto at = [&](double part) {
    return CPoint{static_cast<int>(std::lround(x + part * dx)), static_cast<int>(std::lround(y + part * dy))};
  };
  const CPoint end = at(to);
  a = at(from);
  b = end;
  return true;
}

// Steps along the longer side, and sideways when the error term overflows.
void RasterLine(const CPixels& pixels, CPoint a, CPoint b, std::uint32_t colour) {
  int along = std::abs(b.x - a.x), aside = std::abs(b.y - a.y);
  std::ptrdiff_t step = b.x < a.x ? -1 : 1, stepAside = b.y < a.y ? -pixels.row : pixels.row;
  if (along < aside) {
    std::swap(along, aside);
    std::swap(step, stepAside);
  }
  std::uint32_t* pixel = pixels.first + a.y * pixels.row + a.x;
  for (int left = along, error = along / 2;; --left) {
    *pixel = colour;
    if (left == 0) return;
    pixel += step;
    error -= aside;
    if (error >= 0) continue;
    pixel += stepAside;
    error += along;
  }
}

}  // namespace

void RasterLines(const CPixels& pixels, const CRect& clip, std::span<const CPoint> points,
                 std::uint32_t colour) {
  if (clip.IsEmpty()) return;
  for (std::size_t i = 1; i < points.size(); ++i) {
    CPoint a = points[i - 1], b = points[i];
    if ((clip.PtInRect(a) && clip.PtInRect(b)) || CutLine(clip, a, b)) RasterLine(pixels, a, b, colour);
  }
}

}  // namespace vastra
