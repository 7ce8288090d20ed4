// CSimpleColor: the default colours of curves, a repeating sequence of 14.
#pragma once

#include "vastra/platform/api.h"

namespace vastra {

struct CSimpleColor {
  static constexpr UINT GetFirstPosition() { return 9; }

  // Returns the colour at position and increments it. The bits of a position are, from the highest: light,
  // red, green, blue.
  static constexpr COLORREF GetNextColor(UINT& position) {
    const auto part = [position](UINT bit) -> COLORREF {
      return (position >> bit & 1) * 160 + (position >> 3 & 1) * 90;
    };
    const COLORREF colour = part(2) | part(1) << 8 | part(0) << 16;
    position = position == 14 ? 1 : position + 1;
    return colour;
  }
};

}  // namespace vastra
