// Draws a curve of a chart: a long one into the pixels, the others by the toolkit.
#pragma once

#include <QPainterPath>
#include <QPen>

#include "vastra/charts/curve_geometry.h"
#include "vastra/charts/curve_raster.h"

class QPainter;

namespace vastra {

// The pixels of an image that a painter draws into, Format_RGB32.
struct CChartCanvas {
  CPixels pixels = {};
  CRect all;
  double ratio = 1;  // pixels for each unit of the painter
};

struct CPaintedCurve {
  std::span<const CCurveStep> steps = {};
  std::span<const CMomentRange> away = {};  // when its node was, as the logger told
  CPlotScale scale = {};
  QPen pen = {};
  bool isPlain = false;  // a long line without marks of values and of nodes that are away
};

class CCurvePainter {
 public:
  static constexpr double kUsualWidth = 1.5;  // of a line

  static CPaintedCurve Prepare(std::span<const CCurveStep> steps, std::span<const CMomentRange> away,
                               const CPlotScale& scale, const QPen& pen);
  // canvas: of the painter, or null.
  void Paint(QPainter& painter, const CPaintedCurve& curve, const CChartCanvas* canvas);

 private:
  void PaintPixels(const CPaintedCurve& curve, const CChartCanvas& canvas);
  void PaintPaths(QPainter& painter, const QPen& pen);
  void PaintAway(QPainter& painter, const CPaintedCurve& curve) const;

  CCurveGeometry m_geometry;
  CCurveRaster m_raster;
  QPainterPath m_path;  // keeps its memory, as m_geometry
  std::vector<QPointF> m_marks;
};

}  // namespace vastra
