// Converts geometry and colours to those of the toolkit and back.
#pragma once

#include "vastra/platform/api.h"
#include "vastra/ui/geometry.h"

class QColor;
class QRect;

namespace vastra {

QRect ToRect(const CRect& rect);
CRect FromRect(const QRect& rect);
QColor ToColour(COLORREF colour);
COLORREF FromColour(const QColor& colour);

}  // namespace vastra
