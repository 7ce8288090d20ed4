// The time axis of a chart: its ticks at round times of the clock that the user has chosen, their texts, and
// the name of the zone. Without Qt.
#pragma once

#include <vector>

#include "vastra/history/moment.h"
#include "vastra/platform/string.h"

namespace vastra {

// The clock of a time axis: that of the machine's zone, or UTC.
class VASTRA_API CChartClock {
 public:
  explicit CChartClock(bool isUtc = false) : m_isUtc(isUtc) {}

  bool IsUtc() const { return m_isUtc; }
  CMoment OffsetAt(CMoment moment) const;  // how far the clock is ahead of UTC, in milliseconds
  CMoment ShownAt(CMoment moment) const { return moment + OffsetAt(moment); }
  // The moment at which the clock shows shown, as MomentOfLocal.
  CMoment MomentOf(CMoment shown) const;
  CString ZoneAt(CMoment moment) const;  // "CEST, UTC+2"; "UTC"
  // "2026-03-29 01:59:59.250", with the short name of the zone: " CET".
  CString Text(CMoment moment) const;

 private:
  bool m_isUtc;
};

// A part of a range in which the offset of the clock does not change.
struct CClockPiece {
  CMoment from = 0, to = 0;
  CMoment offset = 0;
};
// The pieces of range, which is some weeks at most, in their order.
std::vector<CClockPiece> PiecesOf(const CMomentRange& range, const CChartClock& clock);

struct CTimeTick {
  CMoment moment = 0;
  CString text;
};

struct CTimeAxis {
  std::vector<CTimeTick> ticks;  // "12:30", "Mar 29"
  // The second line: what holds from a moment on, such as "Sun 2026-03-29", or the zone after its change. The
  // first one is at the beginning of the range.
  std::vector<CTimeTick> contexts;
  CString zone;  // the zones of the range: "CET, UTC+1 / CEST, UTC+2"
};

// width: of the axis, in characters of its font. range is not empty.
CTimeAxis TimeAxisOf(const CMomentRange& range, const CChartClock& clock, double width);

// A span of time for people: "250 ms", "4.25 s", "2 h 5 min 30 s", "1 d 2 h 0 min 0 s"; "-" before a negative
// one.
CString SpanText(CMoment span);

}  // namespace vastra
