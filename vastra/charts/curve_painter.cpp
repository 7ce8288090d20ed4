#include "vastra/charts/curve_painter.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace vastra {
namespace {

constexpr double kMarkSize = 4.5;
constexpr std::ptrdiff_t kManySteps = 30;  // of a curve that is put into the pixels
constexpr double kFarOff = 20'000;         // pixels
constexpr double kAwayLane = 3;            // the height of the marks of nodes that are away
constexpr int kAwayTint = 20;              // of 255

// The steps of a range, and the ones beside it.
std::span<const CCurveStep> StepsIn(const CMomentRange& range, std::span<const CCurveStep> steps) {
  const auto begin = std::ranges::lower_bound(steps, range.from, {}, &CCurveStep::to);
  const auto end = std::ranges::upper_bound(steps, range.to, {}, &CCurveStep::from);
  return {begin - (begin == steps.begin() ? 0 : 1), end + (end == steps.end() ? 0 : 1)};
}

// Whether a curve has many steps; lines from far outside need more digits than the raster has.
bool IsForPixels(std::span<const CCurveStep> steps, const CPlotScale& scale) {
  const std::span<const CCurveStep> shown = StepsIn(scale.range, steps);
  return std::ssize(shown) >= kManySteps + 2 && scale.X(shown.front().from) >= -kFarOff &&
         scale.X(shown.back().to) <= kFarOff;
}

bool HasMarks(const CPaintedCurve& curve) {
  const CPlotScale& scale = curve.scale;
  const auto isVisible = [&](const CMomentRange& range) {
    return range.from < scale.range.to && range.to > scale.range.from;
  };
  if (std::ranges::any_of(curve.away, isVisible)) return true;
  const auto nearby = scale.MomentAt(scale.left + kMarkSize) - scale.range.from;
  const std::span<const CCurveStep> steps = curve.steps;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    if (steps[i].hasInvalid) return true;
    if (i > 0 && (!steps[i].isJoined || steps[i].from - steps[i - 1].to > nearby)) return true;
  }
  return false;
}

}  // namespace

CPaintedCurve CCurvePainter::Prepare(std::span<const CCurveStep> steps, std::span<const CMomentRange> away,
                                     const CPlotScale& scale, const QPen& pen) {
  CPaintedCurve curve = {steps, away, scale, pen};
  curve.isPlain = IsForPixels(steps, scale) && !HasMarks(curve);
  return curve;
}

void CCurvePainter::Paint(QPainter& painter, const CPaintedCurve& curve, const CChartCanvas* canvas) {
  const double width = curve.pen.widthF();
  if (canvas && curve.isPlain) return PaintPixels(curve, *canvas);
  m_geometry.Build(curve.steps, curve.scale, width);
  PaintAway(painter, curve);
  if (canvas && IsForPixels(curve.steps, curve.scale))
    PaintPixels(curve, *canvas);
  else
    PaintPaths(painter, curve.pen);
  m_marks.clear();
  for (const CPlotPoint& mark : m_geometry.Marks()) m_marks.emplace_back(mark.x, mark.y);
  if (m_marks.empty()) return;
  painter.setRenderHint(QPainter::Antialiasing, true);
  painter.setPen(QPen(curve.pen.color(), kMarkSize + width - kUsualWidth, Qt::SolidLine, Qt::RoundCap));
  painter.drawPoints(m_marks.data(), static_cast<int>(m_marks.size()));
}

// One call for all bands and one for all lines.
void CCurvePainter::PaintPaths(QPainter& painter, const QPen& pen) {
  const auto collect = [this](const std::vector<CPointRun>& runs) {
    m_path.clear();
    m_path.setFillRule(Qt::WindingFill);
    for (const CPointRun& run : runs) {
      const CPlotPoint* point = &m_geometry.Points()[run.first];
      m_path.moveTo(point->x, point->y);
      for (std::size_t i = 1; i < run.count; ++i) m_path.lineTo(point[i].x, point[i].y);
    }
  };
  painter.setRenderHint(QPainter::Antialiasing, true);
  collect(m_geometry.Bands());
  painter.fillPath(m_path, pen.color());
  collect(m_geometry.Lines());
  painter.strokePath(m_path, pen);
}

void CCurvePainter::PaintPixels(const CPaintedCurve& curve, const CChartCanvas& canvas) {
  const CPlotScale& scale = curve.scale;
  CPlotScale pixels = scale;
  for (double* place : {&pixels.left, &pixels.top, &pixels.width, &pixels.height}) *place *= canvas.ratio;
  const auto cut = [](double place, int most) {
    return std::clamp(static_cast<int>(std::round(place)), 0, most);
  };
  const CRect clip = {cut(pixels.left, canvas.all.right), cut(pixels.top - canvas.ratio, canvas.all.bottom),
                      cut(pixels.left + pixels.width, canvas.all.right),
                      cut(pixels.top + pixels.height + canvas.ratio, canvas.all.bottom)};
  std::vector<float> dashes;
  if (curve.pen.style() != Qt::SolidLine)
    for (const qreal dash : curve.pen.dashPattern())
      dashes.push_back(static_cast<float>(dash * curve.pen.widthF() * canvas.ratio));
  m_raster.Draw(canvas.pixels, clip, StepsIn(scale.range, curve.steps), pixels,
                curve.pen.widthF() * canvas.ratio, curve.pen.color().rgb(), dashes);
}

// A tint where there is no value at all, and a lane at the bottom where some are missing. A region, so that
// what both logs and logger say has the tint once.
void CCurvePainter::PaintAway(QPainter& painter, const CPaintedCurve& curve) const {
  const CPlotScale& scale = curve.scale;
  QRegion whole, all;
  const auto add = [&](double from, double to, bool isWhole) {
    const double left = std::max(from, scale.left), right = std::min(to, scale.left + scale.width);
    if (right <= left) return;
    const QRect stretch = QRectF(left, scale.top, right - left, scale.height).toAlignedRect();
    all += stretch;
    if (isWhole) whole += stretch;
  };
  for (const CAwayStretch& away : m_geometry.Away()) add(away.left, away.right, away.isWhole);
  for (const CMomentRange& away : curve.away)
    if (away.to > scale.range.from)
      add(scale.X(away.from), std::max(scale.X(away.to), scale.X(away.from) + 1), true);
  painter.setRenderHint(QPainter::Antialiasing, false);
  const auto lane = [&](const QRect& stretch) {
    return QRectF(stretch.left(), scale.top + scale.height - kAwayLane, stretch.width(), kAwayLane);
  };
  const QColor colour = curve.pen.color();
  QColor tint = colour;
  tint.setAlpha(kAwayTint);
  for (const QRect& stretch : whole) {
    painter.fillRect(stretch, tint);
    painter.fillRect(lane(stretch), colour);
  }
  for (const QRect& stretch : all - whole) painter.fillRect(lane(stretch), QBrush(colour, Qt::Dense4Pattern));
}

}  // namespace vastra
