#include "host/desktop/condition_icon.h"

#include <QPainter>
#include <QPainterPath>

#include <iterator>

namespace vastra {
namespace {

constexpr int kUnits = 16;  // a sign is drawn in a square of so many units

// The colours have enough contrast on light and dark backgrounds.
using CDraw = void (*)(QPainter&);
struct CSign {
  QRgb colour;
  CDraw draw;
};

void DrawDash(QPainter& painter) { painter.fillRect(QRectF(3, 7, 10, 2), painter.brush()); }

// A full circle.
void DrawCircle(QPainter& painter) { painter.drawEllipse(QRectF(2, 2, 12, 12)); }

// The outline of a circle, with the hands of a clock.
void DrawClock(QPainter& painter) {
  painter.setPen(QPen(painter.brush().color(), 2));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(QRectF(2, 2, 12, 12));
  painter.drawPolyline(QPolygonF({{8, 5}, {8, 8}, {10.5, 9.5}}));
}

// A triangle with an exclamation mark.
void DrawTriangle(QPainter& painter) {
  painter.drawPolygon(QPolygonF({{8, 1}, {15.5, 15}, {0.5, 15}}));
  painter.fillRect(QRectF(7, 5.5, 2, 5), Qt::black);
  painter.fillRect(QRectF(7, 11.7, 2, 2), Qt::black);
}

// A square with a cross.
void DrawCross(QPainter& painter) {
  painter.drawRect(QRectF(1, 1, 14, 14));
  painter.setPen(QPen(Qt::white, 2));
  painter.drawLine(QPointF(4.5, 4.5), QPointF(11.5, 11.5));
  painter.drawLine(QPointF(11.5, 4.5), QPointF(4.5, 11.5));
}

// By ECondition.
constexpr CSign kSigns[] = {{0xFF8A8A8A, DrawDash},
                            {0xFF2E9E4F, DrawCircle},
                            {0xFF3D85C6, DrawClock},
                            {0xFFE09000, DrawTriangle},
                            {0xFFD03B3B, DrawCross}};

constexpr CSign kStartSign = {0xFF2E9E4F,
                              [](QPainter&painter) {
                                painter.drawPolygon(QPolygonF({{3, 1}, {15, 8}, {3, 15}}));
                              }},
                kStopSign = {0xFFD03B3B, [](QPainter&painter) { painter.drawRect(QRectF(2, 2, 12, 12)); }};

QPixmap Draw(const CSign& sign, int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(static_cast<double>(size) / kUnits, static_cast<double>(size) / kUnits);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(sign.colour));
  sign.draw(painter);
  return pixmap;
}

QIcon DrawIcon(const CSign& sign) {
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64}) icon.addPixmap(Draw(sign, size));
  return icon;
}

}  // namespace

QIcon IconOf(ECondition condition) { return DrawIcon(kSigns[static_cast<std::size_t>(condition)]); }

QIcon StartIcon() { return DrawIcon(kStartSign); }

QIcon StopIcon() { return DrawIcon(kStopSign); }

}  // namespace vastra
