#include "vastra/charts/chart_painter.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

#include "vastra/charts/chart_colour_rules.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr double kSelectedWidth = 2.75;  // pixels, of a curve
constexpr double kTickLength = 4;
constexpr double kTicksPerLine = 0.32;                // value ticks for each line of text, at most
constexpr int kBetweenTint = 18, kSelectedTint = 40;  // of 255
constexpr const char* kCursorNames[] = {"A", "B"};

QColor Blend(const QColor& a, const QColor& b, float part) {
  const auto blend = [part](float x, float y) { return part * x + (1 - part) * y; };
  return QColor::fromRgbF(blend(a.redF(), b.redF()), blend(a.greenF(), b.greenF()),
                          blend(a.blueF(), b.blueF()));
}

QColor Tinted(QColor colour, int alpha) {
  colour.setAlpha(alpha);
  return colour;
}

// Lines of one pixel are sharp at the middle of a pixel.
double Sharp(double place) { return std::floor(place) + 0.5; }

void DrawLine(QPainter& painter, double x1, double y1, double x2, double y2) {
  painter.drawLine(QPointF(Sharp(x1), Sharp(y1)), QPointF(Sharp(x2), Sharp(y2)));
}

// The same, level or upright and without dashes, in a fraction of its time.
void FillLine(QPainter& painter, const QColor& colour, double x1, double y1, double x2, double y2) {
  const double left = std::floor(std::min(x1, x2)), top = std::floor(std::min(y1, y2));
  painter.fillRect(
      QRectF(left, top, std::floor(std::max(x1, x2)) - left + 1, std::floor(std::max(y1, y2)) - top + 1),
      colour);
}

// The line styles of the curves of one colour.
Qt::PenStyle StyleOf(const CChartLayout& layout, std::size_t curve) {
  constexpr Qt::PenStyle kStyles[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine};
  std::size_t before = 0;
  for (std::size_t i = 0; i < curve; ++i) before += layout.curves[i].colour == layout.curves[curve].colour;
  return kStyles[before % std::size(kStyles)];
}

}  // namespace

QRectF ToRect(const CChartBox& box) { return {box.left, box.top, box.width, box.height}; }

CChartInk InkOf(const QPalette& palette) {
  const QColor base = palette.color(QPalette::Active, QPalette::Base);
  const QColor text = palette.color(QPalette::Active, QPalette::Text);
  const bool isDark = base.lightness() < text.lightness();
  return {.base = base,
          .text = text,
          .dim = Blend(text, base, 0.65F),
          .grid = Blend(text, base, isDark ? 0.14F : 0.10F),
          .line = Blend(text, base, 0.4F),
          .accent = palette.color(QPalette::Active, QPalette::Highlight),
          .isDark = isDark};
}

QColor CChartPainter::ColourOf(const CChartCurve& curve) const {
  return QColor::fromRgb(CurveColour(curve.colour, m_ink.isDark));
}

void CChartPainter::LayOut(const CChartState& state, const QSizeF& size, const QFont& font,
                           const QPalette& palette) {
  m_ink = InkOf(palette);
  m_font = font;
  m_texts.SetFont(font);
  const QFontMetricsF metrics(font);
  m_line = metrics.height();
  CFrameRequest request = {.width = size.width(),
                           .height = size.height(),
                           .font = {metrics.averageCharWidth(), m_line},
                           .axes = {},
                           .curves = state.Layout().curves.size()};
  for (const CChartCurve& curve : state.Layout().curves)
    request.names = std::max(request.names, m_texts.Width(state.Caption(curve)));
  m_frame = LayOutChart(request);  // for the height of the plot
  MeasureAxes(state, request);
  m_frame = LayOutChart(request);
  m_time = state.HasRange()
               ? TimeAxisOf(state.Range(), state.Clock(), m_frame.plot.width / request.font.character)
               : CTimeAxis();
}

// Widths are rounded up, so that the plot does not move with each value.
void CChartPainter::MeasureAxes(const CChartState& state, CFrameRequest& request) {
  const int most = std::max(2, static_cast<int>(m_frame.plot.height / m_line * kTicksPerLine));
  m_axes.clear();
  for (const CChartAxis& axis : state.Layout().axes) {
    CAxisTexts texts = {ValueTicks(axis.range, most), state.AxisUnit(axis.id), AxisColour(state, axis.id)};
    double width = 0;
    for (const CValueTick& tick : texts.ticks) width = std::max(width, m_texts.Width(tick.text));
    request.hasUnits = request.hasUnits || !texts.unit.IsEmpty();
    const double unit = 2 * request.font.character;
    request.axes.push_back(std::max(std::ceil(width / unit), 2.0) * unit);
    m_axes.push_back(std::move(texts));
  }
}

// The colour of the only curve of an axis; text of several.
QColor CChartPainter::AxisColour(const CChartState& state, int id) const {
  QColor colour;
  for (const CChartCurve& curve : state.Layout().curves) {
    if (curve.axis != id) continue;
    if (colour.isValid()) return m_ink.dim;
    colour = ColourOf(curve);
  }
  return colour;
}

CPlotScale CChartPainter::Scale(const CChartState& state, int axis) const {
  const CChartBox& plot = m_frame.plot;
  const int place = PlaceOfAxis(state.Layout(), axis);
  const CMomentRange range = state.HasRange() ? state.Range() : CMomentRange{0, 1000};
  return {range,      place < 0 ? CAxisRange() : state.Layout().axes[static_cast<std::size_t>(place)].range,
          plot.left,  plot.top,
          plot.width, plot.height};
}

void CChartPainter::PaintPlot(QPainter& painter, const CChartState& state, const CChartCanvas* canvas) {
  painter.setFont(m_font);
  CollectCurves(state);
  painter.fillRect(QRectF(0, 0, m_frame.time.width, m_frame.time.Bottom()), m_ink.base);
  PaintGrid(painter, state);
  PaintCurves(painter, canvas);
  painter.setRenderHint(QPainter::Antialiasing, false);
  for (std::size_t i = 0; i < m_frame.axes.size(); ++i) PaintValueAxis(painter, state, i);
  PaintTimeAxis(painter, state);
}

// Lines at the ticks of time, and at those of the axis of the selected curve, or of the first axis.
void CChartPainter::PaintGrid(QPainter& painter, const CChartState& state) const {
  const CChartBox& plot = m_frame.plot;
  const std::vector<CChartCurve>& curves = state.Layout().curves;
  painter.setRenderHint(QPainter::Antialiasing, false);
  const int selected = state.Selected() < curves.size() ? curves[state.Selected()].axis : 0;
  const auto axis = static_cast<std::size_t>(std::max(PlaceOfAxis(state.Layout(), selected), 0));
  if (axis < m_axes.size()) {
    const CPlotScale scale = Scale(state, state.Layout().axes[axis].id);
    for (const CValueTick& tick : m_axes[axis].ticks) {
      const double y = scale.Y(tick.value);
      if (y >= plot.top && y < plot.Bottom())
        FillLine(painter, m_ink.grid, plot.left, y, plot.Right() - 1, y);
    }
  }
  const CPlotScale scale = Scale(state, 0);
  for (const CTimeTick& tick : m_time.ticks) {
    const double x = scale.X(tick.moment);
    FillLine(painter, m_ink.grid, x, plot.top, x, plot.Bottom() - 1);
  }
}

void CChartPainter::PaintTimeAxis(QPainter& painter, const CChartState& state) {
  const CChartBox& plot = m_frame.plot;
  const double gap = QFontMetricsF(m_font).averageCharWidth();
  const double first = plot.Bottom() + kTickLength + 1 + m_texts.Ascent(), second = first + 1 + m_line;
  const CPlotScale scale = Scale(state, 0);
  FillLine(painter, m_ink.line, plot.left, plot.Bottom(), plot.Right(), plot.Bottom());
  painter.setPen(m_ink.dim);
  double free = 0;
  for (const CTimeTick& tick : m_time.ticks) {
    const double x = scale.X(tick.moment);
    FillLine(painter, m_ink.line, x, plot.Bottom(), x, plot.Bottom() + kTickLength);
    const double width = m_texts.Width(tick.text);
    if (x - width / 2 < free || x + width / 2 > m_frame.time.width) continue;
    m_texts.Draw(painter, x - width / 2, first, tick.text);
    free = x + width / 2 + gap;
  }
  const double right = m_frame.time.width - m_texts.Width(m_time.zone) - gap;
  if (right > plot.left) m_texts.Draw(painter, right, second, m_time.zone);
  PaintContexts(painter, scale, right - gap);
}

// The second line of the time axis, up to right. The text at the beginning gives way to the one after it.
void CChartPainter::PaintContexts(QPainter& painter, const CPlotScale& scale, double right) {
  const double gap = QFontMetricsF(m_font).averageCharWidth(), bottom = scale.top + scale.height;
  const double baseline = bottom + kTickLength + 2 + m_line + m_texts.Ascent();
  painter.setPen(m_ink.text);
  double free = 0;
  for (std::size_t i = 0; i < m_time.contexts.size(); ++i) {
    const CString& text = m_time.contexts[i].text;
    const double x = std::max(scale.X(m_time.contexts[i].moment), scale.left);
    const double end = x + m_texts.Width(text) + gap;
    const bool isCrowded = i == 0 && m_time.contexts.size() > 1 && scale.X(m_time.contexts[1].moment) < end;
    if (x < free || isCrowded || end > right) continue;
    if (i > 0) FillLine(painter, m_ink.line, x, bottom, x, bottom + kTickLength + 2 * m_line);
    m_texts.Draw(painter, x + (i > 0 ? gap / 2 : 0), baseline, text);
    free = end;
  }
}

void CChartPainter::PaintValueAxis(QPainter& painter, const CChartState& state, std::size_t place) {
  const CChartBox& box = m_frame.axes[place];
  const CAxisTexts& axis = m_axes[place];
  const CPlotScale scale = Scale(state, state.Layout().axes[place].id);
  const bool isLeft = IsLeftAxis(place);
  const double x = isLeft ? box.Right() - 1 : box.left, side = isLeft ? -1 : 1;
  const double gap = QFontMetricsF(m_font).averageCharWidth() * 0.7;
  const QColor line = Blend(axis.colour, m_ink.base, 0.7F);
  painter.setPen(axis.colour);
  FillLine(painter, line, x, box.top, x, box.Bottom());
  for (const CValueTick& tick : axis.ticks) {
    const double y = scale.Y(tick.value);
    if (y < box.top - 0.5 || y > box.Bottom() + 0.5) continue;
    FillLine(painter, line, x, y, x + side * kTickLength, y);
    const double end = x + side * (kTickLength + gap), middle = std::min(y, box.Bottom() - m_line * 0.35);
    m_texts.Draw(painter, isLeft ? end - m_texts.Width(tick.text) : end,
                 middle - m_line / 2 + m_texts.Ascent(), tick.text);
  }
  if (axis.unit.IsEmpty()) return;
  const double width = m_texts.Width(axis.unit), above = box.top - m_line * 1.3;
  m_texts.Draw(painter, isLeft ? x - std::min(width, box.width) : x, above + m_texts.Ascent(), axis.unit);
}

// The selected one is the last.
void CChartPainter::CollectCurves(const CChartState& state) {
  const std::size_t count = state.Layout().curves.size(), selected = state.Selected();
  const auto collect = [&](std::size_t i) {
    const CChartCurve& curve = state.Layout().curves[i];
    if (curve.isHidden || curve.axis == 0) return;
    const QPen pen(ColourOf(curve), i == selected ? kSelectedWidth : CCurvePainter::kUsualWidth,
                   StyleOf(state.Layout(), i), Qt::FlatCap, Qt::BevelJoin);
    m_curves.push_back(
        CCurvePainter::Prepare(state.StepsOf(i), state.AwayOf(i), Scale(state, curve.axis), pen));
  };
  m_curves.clear();
  for (std::size_t i = 0; i < count; ++i)
    if (i != selected) collect(i);
  if (selected < count) collect(selected);
}

void CChartPainter::PaintCurves(QPainter& painter, const CChartCanvas* canvas) {
  const CChartBox& plot = m_frame.plot;
  painter.save();
  painter.setClipRect(QRectF(plot.left, plot.top - 1, plot.width, plot.height + 2));
  for (const CPaintedCurve& curve : m_curves) m_curvePainter.Paint(painter, curve, canvas);
  painter.restore();
}

void CChartPainter::PaintLegend(QPainter& painter, const CChartState& state,
                                std::optional<CMoment> moment) const {
  painter.setFont(m_font);
  for (std::size_t i = 0; i < m_frame.items.size(); ++i) PaintItem(painter, state, i, moment);
  if (m_frame.more.width <= 0) return;
  painter.setPen(m_ink.dim);
  const auto rest = static_cast<qulonglong>(state.Layout().curves.size() - m_frame.items.size());
  painter.drawText(ToRect(m_frame.more), Qt::AlignVCenter | Qt::AlignLeft, QString("+%1 more").arg(rest));
}

void CChartPainter::PaintItem(QPainter& painter, const CChartState& state, std::size_t curve,
                              std::optional<CMoment> moment) const {
  const CLegendItem& item = m_frame.items[curve];
  const CChartCurve& shown = state.Layout().curves[curve];
  const QFontMetricsF metrics(m_font);
  painter.setRenderHint(QPainter::Antialiasing, true);
  if (curve == state.Selected()) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(Tinted(m_ink.accent, kSelectedTint));
    painter.drawRoundedRect(ToRect(item.all).adjusted(-3, 1, -6, -1), 3, 3);
    painter.setBrush(Qt::NoBrush);
  }
  const double middle = item.line.top + item.line.height / 2;
  painter.setPen(QPen(ColourOf(shown), shown.isHidden ? 1 : 3, StyleOf(state.Layout(), curve), Qt::FlatCap));
  painter.drawLine(QPointF(item.line.left, middle), QPointF(item.line.Right(), middle));
  painter.setPen(shown.isHidden ? m_ink.dim : m_ink.text);
  painter.drawText(ToRect(item.name), Qt::AlignVCenter | Qt::AlignLeft,
                   metrics.elidedText(ToScreen(state.Caption(shown)), Qt::ElideMiddle, item.name.width));
  const QString value =
      shown.isHidden ? QString("hidden") : ToScreen(ShortText(state.ValueOf(curve, moment)));
  painter.setPen(shown.isHidden ? m_ink.dim : ColourOf(shown));
  painter.drawText(ToRect(item.value), Qt::AlignVCenter | Qt::AlignLeft,
                   metrics.elidedText(value, Qt::ElideRight, item.value.width));
}

// The stretch between them has a tint; the active one is drawn stronger.
void CChartPainter::PaintCursors(QPainter& painter, const CChartState& state) const {
  if (!state.HasCursors() || !state.HasRange()) return;
  const CChartBox& plot = m_frame.plot;
  const CPlotScale scale = Scale(state, 0);
  double x[kCursors];
  for (std::size_t i = 0; i < kCursors; ++i)
    x[i] = std::clamp(scale.X(state.CursorAt(i)), plot.left - 1, plot.Right() + 1);
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.fillRect(
      QRectF(QPointF(std::min(x[0], x[1]), plot.top), QPointF(std::max(x[0], x[1]), plot.Bottom())),
      Tinted(m_ink.accent, kBetweenTint));
  for (std::size_t i = 0; i < kCursors; ++i) {
    if (x[i] < plot.left || x[i] > plot.Right()) continue;
    const bool isActive = i == state.ActiveCursor();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(isActive ? m_ink.text : m_ink.dim, 1, isActive ? Qt::SolidLine : Qt::DashLine));
    DrawLine(painter, x[i], plot.top, x[i], plot.Bottom() - 1);
    PaintTag(painter, kCursorNames[i], x[i], plot.top, isActive ? m_ink.text : m_ink.dim);
  }
}

// A text on a filled field, as near above or below top as it fits, centred at x within the frame.
void CChartPainter::PaintTag(QPainter& painter, const QString& text, double x, double top,
                             const QColor& colour) const {
  const QFontMetricsF metrics(m_font);
  const double width = metrics.horizontalAdvance(text) + metrics.averageCharWidth() * 1.4;
  const double left = std::clamp(x - width / 2, 0.0, std::max(m_frame.time.width - width, 0.0));
  const QRectF field(std::round(left), std::round(top), std::round(width), std::round(m_line * 1.15));
  painter.setRenderHint(QPainter::Antialiasing, true);
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  painter.drawRoundedRect(field, 3, 3);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(m_ink.base);
  painter.setFont(m_font);
  painter.drawText(field, Qt::AlignCenter, text);
}

void CChartPainter::PaintPointer(QPainter& painter, const CChartState& state, CMoment moment) const {
  const CChartBox& plot = m_frame.plot;
  const double x = Scale(state, 0).X(moment);
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.setPen(QPen(m_ink.dim, 1, Qt::DotLine));
  DrawLine(painter, x, plot.top, x, plot.Bottom() - 1);
  PaintTag(painter, ToScreen(state.Clock().Text(moment)), x, plot.Bottom() + kTickLength, m_ink.dim);
}

void CChartPainter::PaintHint(QPainter& painter, const QString& hint) const {
  painter.setFont(m_font);
  painter.setPen(m_ink.dim);
  painter.drawText(ToRect(m_frame.plot), Qt::AlignCenter | Qt::TextWordWrap, hint);
}

}  // namespace vastra
