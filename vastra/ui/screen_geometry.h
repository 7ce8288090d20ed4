// Places of windows on a screen.
#pragma once

#include "vastra/ui/geometry.h"

namespace vastra {

// The part of screen that a window at wanted gets: of the same size, unless the screen is smaller, and as
// near to wanted as possible.
CRect PutOnto(const CRect& screen, const CRect& wanted);

// The size of a window that scrolls contents of that size: with a bar where they do not fit into room.
CSize ScrolledSize(CSize contents, CSize room, CSize bars);

}  // namespace vastra
