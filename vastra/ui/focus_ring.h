// A ring in a table, list or text that has the focus: the style shows it only in a cell or as a cursor, and
// not at all if there is none.
#pragma once

#include "vastra/platform/api.h"

class QAbstractScrollArea;

namespace vastra {

VASTRA_API void RingOnFocus(QAbstractScrollArea& area);

}  // namespace vastra
