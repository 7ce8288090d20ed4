// Draws a chart: on the screen, into a picture, or as SVG. The parts that change with the pointer are apart
// from the rest, so that a window can keep that as an image.
#pragma once

#include <QFont>
#include <QPalette>
#include <QRectF>

#include <optional>

#include "vastra/charts/chart_frame_geometry.h"
#include "vastra/charts/chart_state_rules.h"
#include "vastra/charts/chart_texts.h"
#include "vastra/charts/curve_painter.h"

class QPainter;

namespace vastra {

QRectF ToRect(const CChartBox& box);

// The colours of a chart on a palette.
struct CChartInk {
  QColor base, text, dim, grid, line, accent;
  bool isDark = false;
};
CChartInk InkOf(const QPalette& palette);

class CChartPainter {
 public:
  // Measures all texts for the present state. The other calls use the result.
  void LayOut(const CChartState& state, const QSizeF& size, const QFont& font, const QPalette& palette);
  const CChartFrame& Frame() const { return m_frame; }
  CPlotScale Scale(const CChartState& state, int axis) const;
  QColor ColourOf(const CChartCurve& curve) const;

  // The background, the axes and the curves. canvas: of the painter, or null.
  void PaintPlot(QPainter& painter, const CChartState& state, const CChartCanvas* canvas = nullptr);
  // Names, and values at a moment; without one, the newest values of the picture.
  void PaintLegend(QPainter& painter, const CChartState& state, std::optional<CMoment> moment) const;
  void PaintCursors(QPainter& painter, const CChartState& state) const;
  // A line at a moment, and its time below.
  void PaintPointer(QPainter& painter, const CChartState& state, CMoment moment) const;
  void PaintHint(QPainter& painter, const QString& hint) const;

 private:
  struct CAxisTexts {
    std::vector<CValueTick> ticks;
    CString unit;
    QColor colour;
  };

  void MeasureAxes(const CChartState& state, CFrameRequest& request);
  QColor AxisColour(const CChartState& state, int id) const;
  void PaintGrid(QPainter& painter, const CChartState& state) const;
  void PaintTimeAxis(QPainter& painter, const CChartState& state);
  void PaintContexts(QPainter& painter, const CPlotScale& scale, double right);
  void PaintValueAxis(QPainter& painter, const CChartState& state, std::size_t place);
  void CollectCurves(const CChartState& state);
  void PaintCurves(QPainter& painter, const CChartCanvas* canvas);
  void PaintItem(QPainter& painter, const CChartState& state, std::size_t curve,
                 std::optional<CMoment> moment) const;
  void PaintTag(QPainter& painter, const QString& text, double x, double top, const QColor& colour) const;

  CChartFrame m_frame;
  CChartInk m_ink;
  QFont m_font;
  double m_line = 16;  // the height of a line of text
  CChartTexts m_texts;
  CTimeAxis m_time;
  std::vector<CAxisTexts> m_axes;
  std::vector<CPaintedCurve> m_curves;  // in the order of painting
  CCurvePainter m_curvePainter;
};

}  // namespace vastra
