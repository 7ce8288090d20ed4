#include "vastra/views/trend_geometry.h"

#include <cmath>

#include "vastra/ui/number_text.h"

namespace vastra {
namespace {

constexpr double kFarOff = 1 << 20;  // pixels; far below the limits of the toolkit's arithmetic

int Cut(double value) { return static_cast<int>(value); }
int Cut(float value) { return static_cast<int>(value); }

float Wide(int pixels) { return static_cast<float>(pixels); }

// The least number d * 10^n above a, with one digit d and n from 0 on. a is above 0.
double NextRound(double a) {
  double power = 1;
  while (a / power >= 1) power *= 10;
  const double step = power > 1 ? power / 10 : 1;
  double top = step;
  while (top < a && top < power) top += step;
  return top == a ? power : top;
}

}  // namespace

CTrendLayout LayOutTrend(CSize client, const CRect& frame) {
  const int width = client.cx, height = client.cy;
  const int bw = std::min(width / 6, 120), bh = std::min(height / 18, 25);
  const int mx = width / 30, gap = height / 140, row = height / 15;
  const int y0 = std::max(height / 30 + frame.top + kTrendCaption, 0);
  const double tall = height * 0.6666666666666666, half = bw * 0.46511627906976744;
  const int hw = Cut(half), cx = frame.right - mx - bw, cx2 = Cut(frame.right - mx - half + 1.0);
  const int pw = Cut((width - mx - bw) * 0.8333333333333334), ph = Cut(height * 0.8333333333333334);
  const int choiceY = Cut(y0 + gap + tall), fileY = Cut(y0 + 2 * row + 3 * gap + tall);

  CTrendLayout layout;
  layout.legend = CRect::Of({cx, y0}, {bw, Cut(tall)});
  layout.edit = CRect::Of({cx, choiceY}, {hw, bh});
  layout.config = CRect::Of({cx2, choiceY}, {hw, bh});
  layout.freeze = CRect::Of({cx, Cut(y0 + 2 * gap + row + tall)}, {bw, bh});
  layout.load = CRect::Of({cx, fileY}, {hw, bh});
  layout.save = CRect::Of({cx2, fileY}, {hw, bh});
  layout.cancel = CRect::Of({cx, Cut(3 * (row + gap) + y0 + tall + 2)}, {bw, bh});
  layout.plot = CRect::Of({frame.left + mx, y0}, {pw, ph});
  layout.vertScale =
      CRect::Of({width / 150 + mx + pw + frame.left, y0}, {width - width / 60 - 2 * mx - pw - bw, ph});
  layout.horizScale =
      CRect::Of({frame.left + mx, Cut(y0 + height * 0.8333333333333334 + gap)}, {pw, height / 9});
  return layout;
}

CScale StartScale(double value) {
  if (!std::isfinite(value)) return {};
  return {value < 0 ? -NextRound(-value) : 0, value > 0 ? NextRound(value) : 0};
}

CCurveWalk::CCurveWalk(const CList<float, float>& history, CScale scale, CSize plot)
    : m_next(history.begin()),
      m_count(scale.maximum == scale.minimum ? kTrendPoints : 0),
      m_plot(plot),
      m_scale(scale),
      m_perUnit(plot.cy / (scale.maximum - scale.minimum)) {}

// False: invalid place.
bool CCurveWalk::Place(float value, int& y) const {
  const double place = m_plot.cy - m_perUnit * (static_cast<double>(value) - m_scale.minimum);
  if (std::isnan(place)) return false;
  y = Cut(std::clamp(place, -kFarOff, kFarOff));
  return true;
}

std::span<const CPoint> CCurveWalk::NextRun() {
  std::size_t length = 0;
  for (; m_count < kTrendPoints && m_next != CList<float, float>::CIterator<const float>();
       ++m_next, ++m_count) {
    CPoint& point = m_run[length];
    point.x = m_plot.cx - m_plot.cx * m_count / (kTrendPoints - 1);
    if (Place(*m_next, point.y)) {
      ++length;
    } else if (length > 1) {
      break;
    } else {
      length = 0;
    }
  }
  return {m_run.data(), length > 1 ? length : 0};
}

CHorizBands HorizBandsOf(const CRect& area) {
  const int height = area.Height();
  CHorizBands bands = {area, area, area};
  bands.ticks.bottom -= Cut(height * 0.8);
  bands.numbers.top += Cut(height * 0.2);
  bands.numbers.bottom -= Cut(height * 0.35);
  bands.unit.top += Cut(height * 0.65);
  return bands;
}

int HorizTick(const CRect& ticks, UINT divisions, UINT i) {
  return Cut(Wide(ticks.Width()) / static_cast<float>(divisions) * static_cast<float>(i) + Wide(ticks.left));
}

CPoint HorizNumber(const CRect& numbers, UINT divisions, UINT i) {
  const int width = numbers.Width();
  const int x =
      Cut(Wide(numbers.right) - Wide(width) / static_cast<float>(divisions) * static_cast<float>(i));
  return {x - width / 25 / 2 + 1, numbers.top};
}

CString HorizText(UINT timeScan, UINT samples, UINT divisions, UINT i) {
  const double step = static_cast<double>(timeScan) * samples / (divisions * 1000.0);
  return NumberText(i * step, 7);
}

CVertBands VertBandsOf(const CRect& area) {
  CVertBands bands = {area, area};
  bands.ticks.right -= Cut(area.Width() * 0.8);
  bands.numbers.left += Cut(area.Width() * 0.2);
  return bands;
}

int VertTick(const CRect& ticks, UINT divisions, UINT i) {
  return Cut(Wide(ticks.bottom) -
             Wide(ticks.Height()) / static_cast<float>(divisions) * static_cast<float>(i));
}

CRect VertNumber(const CRect& numbers, UINT divisions, UINT i) {
  const int half = numbers.Height() / 14 / 2, y = VertTick(numbers, divisions, i);
  return {numbers.left, y - half + 1, numbers.right, y + half + 1};
}

CString VertText(CScale scale, UINT divisions, UINT i) {
  return NumberText(i * ((scale.maximum - scale.minimum) / divisions) + scale.minimum, 7);
}

int LegendRow(const CRect& frame, UINT rows) { return rows ? frame.Height() / static_cast<int>(rows) : 0; }

CPoint LegendItem(const CRect& frame, UINT rows, UINT i) {
  return {frame.left, frame.top + Cut((i + 0.5) * LegendRow(frame, rows))};
}

int LegendItemOnPoint(const CRect& frame, UINT rows, UINT count, CPoint point) {
  const int row = LegendRow(frame, rows);
  if (!frame.PtInRect(point) || row <= 0) return -1;
  const int item = Cut(static_cast<double>(point.y - frame.top) / row - 0.5);
  return item < static_cast<int>(count) ? item : -1;
}

CItemParts ItemPartsOf(CSize size) {
  return {{5, std::min(4, size.cy), 20, std::max(4, size.cy)}, {25, 4, size.cx - 5, size.cy}};
}

}  // namespace vastra
