// Draws lines of one pixel's width into the pixels of a picture, in a fifth of the time of the toolkit's
// lines: curves are redrawn at every refresh.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "vastra/ui/geometry.h"

namespace vastra {

struct CPixels {
  std::uint32_t* first;  // of the pixel at 0, 0
  std::ptrdiff_t row;    // pixels from row to row
};

// Draws a line from each point to the next, including both ends, clipped to clip, which is inside the
// picture. Points can be anywhere.
void RasterLines(const CPixels& pixels, const CRect& clip, std::span<const CPoint> points,
                 std::uint32_t colour);

}  // namespace vastra
