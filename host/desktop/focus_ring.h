// A ring in a table, list or text that has the focus: the style shows it only in a cell or as a cursor, and
// not at all if there is none.
#pragma once

class QAbstractScrollArea;

namespace vastra {

void RingOnFocus(QAbstractScrollArea& area);

}  // namespace vastra
