#include "vastra/charts/chart_range_rules.h"

#include <algorithm>
#include <cmath>

namespace vastra {
namespace {

constexpr double kRoom = 0.02;     // of the length, beside all rows
constexpr CMoment kQueryRoom = 4;  // a fourth of the length, beside a query
constexpr std::size_t kMostPlaces = 100;
constexpr std::chrono::milliseconds kAtOnce{800};

CMoment Length(const CMomentRange& range) { return range.to - range.from; }

CMoment Part(CMoment length, double part) {
  return static_cast<CMoment>(std::llround(static_cast<double>(length) * part));
}

CMoment FloorToStep(CMoment moment, CMoment step) {
  const CMoment rest = moment % step;
  return moment - rest - (rest < 0 ? step : 0);
}

// The largest 1, 2 or 5 times a power of ten up to length; 1 if that is below 1.
CMoment RoundLength(double length) {
  CMoment step = 1;
  for (;;) {
    for (const CMoment times : {2, 5, 10})
      if (static_cast<double>(step * times) > length) return step * (times == 2 ? 1 : times == 5 ? 2 : 5);
    step *= 10;
  }
}

}  // namespace

// A range that reaches past all moments is moved, and cut if it is longer.
CMomentRange LimitedRange(CMomentRange range) {
  if (Length(range) < kShortestRange) {
    range.from -= (kShortestRange - Length(range)) / 2;
    range.to = range.from + kShortestRange;
  }
  if (range.from < kFirstMoment) range = {kFirstMoment, std::min(kFirstMoment + Length(range), kEndMoment)};
  if (range.to > kEndMoment) range = {std::max(kEndMoment - Length(range), kFirstMoment), kEndMoment};
  return range;
}

CMomentRange ZoomedAbout(const CMomentRange& range, CMoment moment, double factor) {
  const double most = static_cast<double>(kEndMoment - kFirstMoment) / static_cast<double>(Length(range));
  const CMoment length = std::max(Part(Length(range), std::min(factor, most)), CMoment{kShortestRange});
  const double before = static_cast<double>(moment - range.from) / static_cast<double>(Length(range));
  const CMoment from = moment - Part(length, before);
  return LimitedRange({from, from + length});
}

CMomentRange Panned(const CMomentRange& range, CMoment by) {
  by = std::clamp(by, kFirstMoment - kEndMoment, kEndMoment - kFirstMoment);
  return LimitedRange({range.from + by, range.to + by});
}

CMomentRange WholeRange(const CMomentRange& rows, const CMomentRange& range) {
  if (Length(rows) <= 0) return range;
  const CMoment room = std::max(Part(Length(rows), kRoom), CMoment{kShortestRange});
  return LimitedRange({rows.from - room, rows.to + room});
}

CMomentRange FollowedRange(const CMomentRange& range, const CMomentRange& rows) {
  if (Length(rows) <= 0) return range;
  const CMoment to = rows.to + Part(Length(range), kRoom);
  return LimitedRange({to - Length(range), to});
}

CAxisRange ZoomedAbout(const CAxisRange& range, double value, double factor) {
  return DrawableRange({value - (value - range.low) * factor, value + (range.high - value) * factor});
}

CAxisRange Panned(const CAxisRange& range, double by) {
  return DrawableRange({range.low + by, range.high + by});
}

CChartQuery QueryFor(const CMomentRange& range, double pixels, std::vector<CString> variables) {
  const CMoment step = RoundLength(static_cast<double>(Length(range)) / std::max(pixels, 1.0));
  const CMoment room = Length(range) / kQueryRoom;
  CMoment from = FloorToStep(std::max(range.from - room, kFirstMoment), step);
  const CMoment to = FloorToStep(std::min(range.to + room, kEndMoment) + step - 1, step);
  return {.range = {from, to},
          .columns = static_cast<std::uint32_t>((to - from) / step),
          .variables = std::move(variables)};
}

bool Serves(const CChartQuery& asked, const CMomentRange& range, const CChartQuery& wanted) {
  if (asked.columns == 0 || asked.variables != wanted.variables) return false;
  const bool isSameStep = Length(asked.range) / asked.columns == Length(wanted.range) / wanted.columns;
  return isSameStep && asked.range.from <= std::max(range.from, wanted.range.from) &&
         asked.range.to >= std::min(range.to, wanted.range.to);
}

void CChartPlaces::Leave(const CChartPlace& place, int move, Time now) {
  const bool isSameStep = move == m_move && now - m_moved < kAtOnce && !m_back.empty();
  m_move = move;
  m_moved = now;
  m_forward.clear();
  if (isSameStep) return;
  if (m_back.size() == kMostPlaces) m_back.erase(m_back.begin());
  m_back.push_back(place);
}

CChartPlace CChartPlaces::Step(std::vector<CChartPlace>& from, std::vector<CChartPlace>& to,
                               const CChartPlace& now) {
  CChartPlace place = std::move(from.back());
  from.pop_back();
  to.push_back(now);
  m_move = -1;
  return place;
}

}  // namespace vastra
