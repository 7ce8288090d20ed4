// Lines of one pixel's width, without a display.
#include "vastra/ui/line_raster.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vastra {
namespace {

constexpr int kWidth = 9, kHeight = 5, kFar = 1 << 30;
constexpr CRect kClip = {1, 1, 8, 4};

// The rows of the picture after lines through points. The rim is outside the clip and must stay empty.
std::string Drawn(const std::vector<CPoint>& points) {
  std::vector<std::uint32_t> pixels(kWidth * kHeight, '.');
  RasterLines({pixels.data(), kWidth}, kClip, points, '#');
  std::string all;
  for (int y = 0; y < kHeight; ++y) {
    const std::string row(pixels.begin() + y * kWidth, pixels.begin() + (y + 1) * kWidth);
    const bool isRim = y == 0 || y == kHeight - 1;
    EXPECT_EQ(row, isRim ? std::string(kWidth, '.') : "." + row.substr(1, 7) + ".");
    if (!isRim) all += row.substr(1, 7) + " ";
  }
  return all;
}

TEST(LineRaster, ALineHasBothItsEndsAndNothingBeyondTheClip) {
  const struct {
    std::vector<CPoint> points;
    const char* picture;
  } kCases[] = {
      {{}, "....... ....... ....... "},
      {{{3, 2}}, "....... ....... ....... "},
      {{{3, 2}, {3, 2}}, "....... ..#.... ....... "},
      {{{1, 1}, {7, 1}}, "####### ....... ....... "},
      {{{7, 3}, {7, 1}}, "......# ......# ......# "},
      {{{1, 3}, {3, 1}, {5, 3}}, "..#.... .#.#... #...#.. "},
      {{{1, 1}, {7, 3}}, "##..... ..###.. .....## "},
      {{{7, 3}, {1, 1}}, "##..... ..###.. .....## "},
      {{{-9, 2}, {20, 2}}, "....... ####### ....... "},
      {{{4, kFar}, {4, -kFar}}, "...#... ...#... ...#... "},
      {{{3, 2}, {5, -kFar}}, "..#.... ..#.... ....... "},
      {{{-kFar, -kFar}, {kFar, kFar}}, "#...... .#..... ..#.... "},
      {{{0, 0}, {8, 0}, {8, 4}, {0, 4}, {0, 0}}, "....... ....... ....... "},
      {{{-5, 2}, {2, -5}}, "....... ....... ....... "},
      {{{0, 3}, {3, 0}}, ".#..... #...... ....... "},
  };
  for (const auto& row : kCases) EXPECT_EQ(Drawn(row.points), row.picture);
}

}  // namespace
}  // namespace vastra
