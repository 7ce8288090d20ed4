// Lines of one pixel's width, without a display.
#include "vastra/ui/line_raster.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vastra {
namespace {

constexpr int kWidth = 9, kHeight = 5, kFar = 1 << 30;
constexpr CRect kClip = {1, 1, 8, 4};

// The rows inside the clip after lines through points. Nothing is drawn outside.
std::string Drawn(const std::vector<CPoint>& points) {
  std::vector<std::uint32_t> pixels(kWidth * kHeight, '.');
  RasterLines({pixels.data(), kWidth}, kClip, points, '#');
  std::string rows;
  for (auto row = pixels.begin() + kClip.top * kWidth; row != pixels.begin() + kClip.bottom * kWidth;
       row += kWidth)
    rows += std::string(row + kClip.left, row + kClip.right) + " ";
  EXPECT_EQ(std::count(pixels.begin(), pixels.end(), '#'), std::count(rows.begin(), rows.end(), '#'));
  return rows;
}

TEST(LineRaster, ALineHasBothItsEndsAndNothingBeyondTheClip) {
  const std::pair<std::vector<CPoint>, const char*> kCases[] = {
      {{{3, 2}, {3, 2}}, "....... ..#.... ....... "},
      {{{1, 3}, {3, 1}, {5, 3}}, "..#.... .#.#... #...#.. "},
      {{{1, 1}, {7, 3}}, "##..... ..###.. .....## "},
      {{{7, 3}, {1, 1}}, "##..... ..###.. .....## "},
      {{{-9, 2}, {20, 2}}, "....... ####### ....... "},
      {{{4, kFar}, {4, -kFar}}, "...#... ...#... ...#... "},
      {{{3, 2}, {5, -kFar}}, "..#.... ..#.... ....... "},
      {{{-kFar, -kFar}, {kFar, kFar}}, "#...... .#..... ..#.... "},
      {{{0, 0}, {8, 0}, {8, 4}, {0, 4}, {0, 0}}, "....... ....... ....... "},
      {{{0, 3}, {3, 0}}, ".#..... #...... ....... "},
  };
  for (const auto& [points, picture] : kCases) EXPECT_EQ(Drawn(points), picture);
}

}  // namespace
}  // namespace vastra
