#include "vastra/ui/convert.h"

#include <QColor>
#include <QRect>

#include "vastra/ui/drawing.h"

namespace vastra {

QRect ToRect(const CRect& rect) { return {rect.left, rect.top, rect.Width(), rect.Height()}; }

CRect FromRect(const QRect& rect) { return CRect::Of({rect.x(), rect.y()}, {rect.width(), rect.height()}); }

QColor ToColour(COLORREF colour) {
  return QColor::fromRgb((colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF));
}

COLORREF FromColour(const QColor& colour) { return RGB(colour.red(), colour.green(), colour.blue()); }

}  // namespace vastra
