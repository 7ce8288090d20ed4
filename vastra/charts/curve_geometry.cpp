#include "vastra/charts/curve_geometry.h"

#include <algorithm>
#include <cmath>

namespace vastra {
namespace {

constexpr double kNearColumns = 1.5;   // pixels; columns that are not farther apart make a band
constexpr std::size_t kLeastBand = 4;  // columns
constexpr double kRough = 0.25;  // pixels; extremes of a column that are nearer need no drawing of their own
constexpr std::size_t kRoughReach = 3;  // columns; smooth ones between rough ones belong to the band
constexpr double kWideStep = 2;         // pixels; of a step that is still coarse
constexpr double kSpike = 3;            // pixels; a column that is higher has its whole width in a band
constexpr double kMostMore = 0.4;       // pixels that a high column of a band reaches into its neighbour
constexpr double kMarkSpace = 6;        // pixels between values that are marked
constexpr double kFarOutside = 4000;    // pixels; drawing is exact up to there

// The part of a line within [low, high] of one coordinate: from and to are its ends, from 0 to 1.
bool CutPart(double begin, double end, double low, double high, double& from, double& to) {
  const double length = end - begin;
  if (length == 0) return begin >= low && begin <= high;
  const double a = (low - begin) / length, b = (high - begin) / length;
  from = std::max(from, std::min(a, b));
  to = std::min(to, std::max(a, b));
  return from <= to;
}

bool HasPoint(CPlotPoint low, CPlotPoint high, CPlotPoint point) {
  return point.x >= low.x && point.x <= high.x && point.y >= low.y && point.y <= high.y;
}

}  // namespace

CMoment CPlotScale::MomentAt(double x) const {
  const double moment =
      static_cast<double>(range.from) + (x - left) * static_cast<double>(range.to - range.from) / width;
  return static_cast<CMoment>(
      std::clamp(std::round(moment), static_cast<double>(kFirstMoment), static_cast<double>(kEndMoment - 1)));
}

void CCurveGeometry::Build(std::span<const CCurveStep> steps, const CPlotScale& scale, double lineWidth) {
  m_columns.clear();
  m_points.clear();
  m_marks.clear();
  m_lines.clear();
  m_bands.clear();
  m_away.clear();
  m_lineWidth = lineWidth;
  m_clipLow = {scale.left - kFarOutside, scale.top - kFarOutside};
  m_clipHigh = {scale.left + scale.width + kFarOutside, scale.top + scale.height + kFarOutside};
  CollectColumns(steps, scale);
  for (CColumn& column : m_columns) column.isRough = IsRough(column);
  for (std::size_t i = 0; i < m_columns.size();) {
    const std::size_t end = BandEnd(i);
    if (end == i) {
      AddLine(i++);
      continue;
    }
    if (m_columns[i].isJoined && i > 0) AddSegment(m_columns[i - 1].last, m_columns[i].first);
    AddBand(i, end);
    i = end;
  }
}

// A step without values is no column, and no line leads over it.
void CCurveGeometry::CollectColumns(std::span<const CCurveStep> steps, const CPlotScale& scale) {
  bool isBroken = false;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const CCurveStep& step = steps[i];
    if (step.hasInvalid) AddAway(step, i + 1 < steps.size() ? &steps[i + 1] : nullptr, scale);
    if (step.values > 0) AddStep(step, scale, step.isJoined && !isBroken);
    isBroken = step.values == 0;
  }
}

// Adds a step to the last column if it begins and ends in the same pixel.
void CCurveGeometry::AddStep(const CCurveStep& step, const CPlotScale& scale, bool isJoined) {
  CColumn column = {.first = {scale.X(step.from), scale.Y(static_cast<double>(step.first))},
                    .last = {scale.X(step.to), scale.Y(static_cast<double>(step.last))},
                    .top = scale.Y(static_cast<double>(step.greatest)),
                    .bottom = scale.Y(static_cast<double>(step.least)),
                    .right = scale.X(step.to),
                    .values = step.values,
                    .isJoined = isJoined};
  if (!m_columns.empty()) {
    CColumn& last = m_columns.back();
    const bool isSamePixel = std::floor(last.first.x) == std::floor(column.first.x);
    if (isSamePixel && column.right - last.first.x <= 1) {
      last.last = column.last;
      last.top = std::min(last.top, column.top);
      last.bottom = std::max(last.bottom, column.bottom);
      last.right = column.right;
      last.values += column.values;
      return;
    }
  }
  m_columns.push_back(column);
}

// A stretch ends where the next step begins, if that follows without a gap.
void CCurveGeometry::AddAway(const CCurveStep& step, const CCurveStep* next, const CPlotScale& scale) {
  const CMoment end = next && next->isJoined ? next->from : step.to;
  const CAwayStretch away = {scale.X(step.from), std::max(scale.X(end), scale.X(step.from) + 1),
                             step.values == 0};
  if (away.right < m_clipLow.x || away.left > m_clipHigh.x) return;
  if (!m_away.empty() && m_away.back().isWhole == away.isWhole && away.left <= m_away.back().right + 1)
    m_away.back().right = std::max(m_away.back().right, away.right);
  else
    m_away.push_back(away);
}

// Whether the column follows the one before pixel by pixel.
bool CCurveGeometry::IsNear(std::size_t i) const {
  return i > 0 && i < m_columns.size() && m_columns[i].isJoined &&
         m_columns[i].first.x - m_columns[i - 1].right <= kNearColumns;
}

bool CCurveGeometry::IsWide(const CColumn& column) const {
  return column.values > 2 && column.right - column.first.x > kWideStep;
}

// Whether the values of a column go beyond its first and its last one: a line from that one to this one would
// lose them.
bool CCurveGeometry::IsRough(const CColumn& column) {
  return column.top < std::min(column.first.y, column.last.y) - kRough ||
         column.bottom > std::max(column.first.y, column.last.y) + kRough;
}

// Whether column i belongs to a band: it or a column close to it is rough.
bool CCurveGeometry::IsInBand(std::size_t i) const {
  const std::size_t end = std::min(i + kRoughReach + 1, m_columns.size());
  for (std::size_t j = i - std::min(i, kRoughReach); j < end; ++j)
    if (m_columns[j].isRough) return true;
  return false;
}

// After the last column of the band that begins at first; first: none begins there.
std::size_t CCurveGeometry::BandEnd(std::size_t first) const {
  if (!IsInBand(first)) return first;
  std::size_t end = first + 1;
  while (IsNear(end) && IsInBand(end)) ++end;
  return end - first >= kLeastBand || IsWide(m_columns[first]) ? end : first;
}

// An outline, along the tops from left to right and back along the bottoms. Each column reaches to the middle
// of the way to its neighbours, so that the band is where a line through all values would be.
void CCurveGeometry::AddBand(std::size_t first, std::size_t end) {
  const CColumn &left = m_columns[first], &right = m_columns[end - 1];
  if (right.right < m_clipLow.x || left.first.x > m_clipHigh.x) return;
  for (std::size_t i = first + 1; i < end; ++i) {
    CColumn &before = m_columns[i - 1], &column = m_columns[i];
    const double middle = (before.last.y + column.first.y) / 2;
    for (CColumn* side : {&before, &column}) {
      side->top = std::min(side->top, middle);
      side->bottom = std::max(side->bottom, middle);
    }
  }
  const std::size_t begin = m_points.size();
  for (std::size_t i = first; i < end; ++i) AddTop(i, first, end);
  for (std::size_t i = end; i-- > first;) AddBottom(i, first, end);
  m_bands.push_back({begin, m_points.size() - begin});
}

// Where column i of a band from first to end begins and ends. The higher one of two neighbours is the wider
// one, so that a peak of one column is as wide as the line; the outline never goes back.
std::pair<double, double> CCurveGeometry::SidesOf(std::size_t i, std::size_t first, std::size_t end,
                                                  bool isHigherLeft, bool isHigherRight) const {
  const double more = std::clamp((m_lineWidth - 1) / 2, 0.0, kMostMore);
  const CColumn& column = m_columns[i];
  double left = std::min(column.first.x, column.Middle() - m_lineWidth / 2);
  double right = std::max(column.right, column.Middle() + m_lineWidth / 2);
  if (i > first) left = (m_columns[i - 1].right + column.first.x) / 2 + (isHigherLeft ? more : -more);
  if (i + 1 < end) right = (column.right + m_columns[i + 1].first.x) / 2 + (isHigherRight ? -more : more);
  return {left, right};
}

void CCurveGeometry::AddTop(std::size_t i, std::size_t first, std::size_t end) {
  const CColumn& column = m_columns[i];
  const double y = std::clamp(column.top - m_lineWidth / 2, m_clipLow.y, m_clipHigh.y);
  if (!IsHigh(column)) return m_points.push_back({column.Middle(), y});
  const auto [left, right] = SidesOf(i, first, end, i > first && m_columns[i - 1].top < column.top,
                                     i + 1 < end && m_columns[i + 1].top < column.top);
  m_points.push_back({left, y});
  m_points.push_back({right, y});
}

void CCurveGeometry::AddBottom(std::size_t i, std::size_t first, std::size_t end) {
  const CColumn& column = m_columns[i];
  const double y = std::clamp(column.bottom + m_lineWidth / 2, m_clipLow.y, m_clipHigh.y);
  if (!IsHigh(column)) return m_points.push_back({column.Middle(), y});
  const auto [left, right] = SidesOf(i, first, end, i > first && m_columns[i - 1].bottom > column.bottom,
                                     i + 1 < end && m_columns[i + 1].bottom > column.bottom);
  m_points.push_back({right, y});
  m_points.push_back({left, y});
}

// A column that is much higher than the line has its whole width: its extremes would fade in a slope.
bool CCurveGeometry::IsHigh(const CColumn& column) {
  return column.bottom - column.top > kSpike || column.right - column.first.x > kWideStep;
}

void CCurveGeometry::AddLine(std::size_t i) {
  const CColumn& column = m_columns[i];
  if (column.isJoined && i > 0) AddSegment(m_columns[i - 1].last, column.first);
  const CPlotPoint bottom = {column.Middle(), column.bottom}, top = {column.Middle(), column.top};
  if (column.isRough) {
    AddSegment(column.first, bottom);
    AddSegment(bottom, top);
    AddSegment(top, column.last);
  } else {
    AddSegment(column.first, column.last);
  }
  AddMark(i);
}

// Marks values with room around them, and those that no line leads to, which could not be seen otherwise.
void CCurveGeometry::AddMark(std::size_t i) {
  const CColumn& column = m_columns[i];
  const bool hasNext = i + 1 < m_columns.size() && m_columns[i + 1].isJoined;
  const bool isAlone = !column.isJoined && !hasNext;
  const double before = column.isJoined && i > 0 ? column.first.x - m_columns[i - 1].right : kMarkSpace;
  const double after = hasNext ? m_columns[i + 1].first.x - column.right : kMarkSpace;
  if (!isAlone && (std::min(before, after) < kMarkSpace || column.values > 2)) return;
  for (const CPlotPoint& point : {column.first, column.last}) {
    if (HasPoint(m_clipLow, m_clipHigh, point)) m_marks.push_back(point);
    if (column.first == column.last) return;
  }
}

// Continues the line that ends at from, or begins one there. Far outside of the plot it is cut off, without a
// change of its direction.
void CCurveGeometry::AddSegment(CPlotPoint from, CPlotPoint to) {
  if (from == to) return;
  if (!HasPoint(m_clipLow, m_clipHigh, from) || !HasPoint(m_clipLow, m_clipHigh, to)) {
    double begin = 0, end = 1;
    if (!CutPart(from.x, to.x, m_clipLow.x, m_clipHigh.x, begin, end) ||
        !CutPart(from.y, to.y, m_clipLow.y, m_clipHigh.y, begin, end))
      return;
    const CPlotPoint way = {to.x - from.x, to.y - from.y}, start = from;
    from = {start.x + begin * way.x, start.y + begin * way.y};
    to = {start.x + end * way.x, start.y + end * way.y};
  }
  const bool isNew = m_lines.empty() || m_lines.back().first + m_lines.back().count != m_points.size() ||
                     !(m_points.back() == from);
  if (isNew) {
    m_lines.push_back({m_points.size(), 1});
    m_points.push_back(from);
  }
  m_points.push_back(to);
  ++m_lines.back().count;
}

}  // namespace vastra
