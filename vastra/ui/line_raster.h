// Lines of one pixel's width into the pixels of a picture. Curves are redrawn at every refresh; this takes a
// fifth of the time of the toolkit's own lines.
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

// Lines from each point to the next, both ends included, as far as they lie in clip, which lies in the
// picture. Points may lie anywhere.
void RasterLines(const CPixels& pixels, const CRect& clip, std::span<const CPoint> points,
                 std::uint32_t colour);

}  // namespace vastra
