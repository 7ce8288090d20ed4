#include "vastra/charts/time_axis_geometry.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>

#include "vastra/history/local_time.h"
#include "vastra/platform/time.h"
#include "vastra/ui/number_text.h"

namespace vastra {
namespace {

constexpr CMoment kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute, kDay = 24 * kHour;
constexpr int kTickPause = 3;  // characters between two texts, at least

// How ticks of a step are written: the characters of a text, and those of the date below it.
enum class ETickForm { milliseconds, seconds, minutes, days, months, years };
constexpr int kTickWidths[] = {12, 8, 5, 6, 4, 4};

// The distance of ticks: milliseconds, or months of the calendar.
struct CTickStep {
  CMoment length = 0;
  int months = 0;
  ETickForm form = ETickForm::milliseconds;

  double About() const { return months ? months * 30.4 * kDay : static_cast<double>(length); }
};
constexpr CTickStep kTickSteps[] = {{1, 0, ETickForm::milliseconds},
                                    {2, 0, ETickForm::milliseconds},
                                    {5, 0, ETickForm::milliseconds},
                                    {10, 0, ETickForm::milliseconds},
                                    {20, 0, ETickForm::milliseconds},
                                    {50, 0, ETickForm::milliseconds},
                                    {100, 0, ETickForm::milliseconds},
                                    {200, 0, ETickForm::milliseconds},
                                    {500, 0, ETickForm::milliseconds},
                                    {1 * kSecond, 0, ETickForm::seconds},
                                    {2 * kSecond, 0, ETickForm::seconds},
                                    {5 * kSecond, 0, ETickForm::seconds},
                                    {10 * kSecond, 0, ETickForm::seconds},
                                    {15 * kSecond, 0, ETickForm::seconds},
                                    {30 * kSecond, 0, ETickForm::seconds},
                                    {1 * kMinute, 0, ETickForm::minutes},
                                    {2 * kMinute, 0, ETickForm::minutes},
                                    {5 * kMinute, 0, ETickForm::minutes},
                                    {10 * kMinute, 0, ETickForm::minutes},
                                    {15 * kMinute, 0, ETickForm::minutes},
                                    {30 * kMinute, 0, ETickForm::minutes},
                                    {1 * kHour, 0, ETickForm::minutes},
                                    {2 * kHour, 0, ETickForm::minutes},
                                    {3 * kHour, 0, ETickForm::minutes},
                                    {6 * kHour, 0, ETickForm::minutes},
                                    {12 * kHour, 0, ETickForm::minutes},
                                    {1 * kDay, 0, ETickForm::days},
                                    {2 * kDay, 0, ETickForm::days},
                                    {7 * kDay, 0, ETickForm::days},
                                    {0, 1, ETickForm::months},
                                    {0, 3, ETickForm::months},
                                    {0, 6, ETickForm::months},
                                    {0, 12, ETickForm::years},
                                    {0, 24, ETickForm::years},
                                    {0, 60, ETickForm::years},
                                    {0, 120, ETickForm::years},
                                    {0, 240, ETickForm::years}};

constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr const char* kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

CMoment FloorTo(CMoment number, CMoment unit) {
  const CMoment rest = number % unit;
  return number - rest - (rest < 0 ? unit : 0);
}

std::chrono::year_month_day DateOf(CMoment shown) {
  return {std::chrono::floor<std::chrono::days>(
      std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(shown)))};
}

CString Formatted(const char* format, int a, int b = 0, int c = 0, int d = 0) {
  CString text;
  text.Format(format, a, b, c, d);
  return text;
}

CString TickText(CMoment shown, ETickForm form) {
  const auto date = DateOf(shown);
  const auto rest = static_cast<int>(shown - FloorTo(shown, kDay));
  const int hours = rest / static_cast<int>(kHour), minutes = rest / static_cast<int>(kMinute) % 60,
            seconds = rest / 1000 % 60;
  switch (form) {
    case ETickForm::milliseconds:
      return Formatted("%02d:%02d:%02d.%03d", hours, minutes, seconds, rest % 1000);
    case ETickForm::seconds:
      return Formatted("%02d:%02d:%02d", hours, minutes, seconds);
    case ETickForm::minutes:
      return Formatted("%02d:%02d", hours, minutes);
    case ETickForm::days:
      return kMonths[static_cast<unsigned>(date.month()) - 1] +
             Formatted(" %d", static_cast<int>(static_cast<unsigned>(date.day())));
    case ETickForm::months:
      return kMonths[static_cast<unsigned>(date.month()) - 1];
    default:
      return Formatted("%d", static_cast<int>(date.year()));
  }
}

CString DateText(const std::chrono::year_month_day& date) {
  return Formatted("%d-%02d-%02d", static_cast<int>(date.year()),
                   static_cast<int>(static_cast<unsigned>(date.month())),
                   static_cast<int>(static_cast<unsigned>(date.day())));
}

// What the text of a tick leaves out: the day, the year, or nothing.
CString ContextText(CMoment shown, ETickForm form) {
  const auto date = DateOf(shown);
  if (form == ETickForm::years) return {};
  if (form >= ETickForm::days) return Formatted("%d", static_cast<int>(date.year()));
  return kWeekdays[std::chrono::weekday(std::chrono::sys_days(date)).c_encoding()] + CString(" ") +
         DateText(date);
}

// The finest step whose texts have room.
const CTickStep& StepFor(double span, double width) {
  const auto fits = [&](const CTickStep& step) {
    const int needs = kTickWidths[static_cast<std::size_t>(step.form)] + kTickPause;
    return step.About() * width >= span * needs;
  };
  const auto* found = std::find_if(std::begin(kTickSteps), std::end(kTickSteps), fits);
  return found == std::end(kTickSteps) ? found[-1] : *found;
}

// The moment of the change between from and to, to the second: the offsets at both differ.
CMoment FindChange(CMoment from, CMoment to, const CChartClock& clock) {
  const CMoment before = clock.OffsetAt(from);
  CMoment low = FloorTo(from, kSecond) / kSecond, high = FloorTo(to, kSecond) / kSecond;
  while (high - low > 1) {
    const CMoment middle = low + (high - low) / 2;
    (clock.OffsetAt(middle * kSecond) == before ? low : high) = middle;
  }
  return high * kSecond;
}

// Ticks of steps below a day: in each piece where the clock shows a multiple of the step.
void AddClockTicks(CTimeAxis& axis, const CMomentRange& range, const CChartClock& clock,
                   const CTickStep& step) {
  for (const CClockPiece& piece : PiecesOf(range, clock)) {
    CMoment shown = FloorTo(piece.from + piece.offset - 1, step.length) + step.length;
    for (; shown - piece.offset < piece.to; shown += step.length)
      axis.ticks.push_back({shown - piece.offset, TickText(shown, step.form)});
  }
}

// Adds the tick at which the clock shows shown; false: it is after the range.
bool AddShown(CTimeAxis& axis, const CMomentRange& range, const CChartClock& clock, CMoment shown,
              ETickForm form) {
  const CMoment moment = clock.MomentOf(shown);
  if (range.Has(moment)) axis.ticks.push_back({moment, TickText(shown, form)});
  return moment < range.to;
}

// Every so many days since the Monday before 1970, so that ticks of weeks are Mondays.
void AddDayTicks(CTimeAxis& axis, const CMomentRange& range, const CChartClock& clock,
                 const CTickStep& step) {
  constexpr CMoment kMonday = -3 * kDay;
  CMoment shown = FloorTo(clock.ShownAt(range.from) - kDay - kMonday, step.length) + kMonday;
  while (AddShown(axis, range, clock, shown, step.form)) shown += step.length;
}

void AddMonthTicks(CTimeAxis& axis, const CMomentRange& range, const CChartClock& clock,
                   const CTickStep& step) {
  const auto date = DateOf(clock.ShownAt(range.from));
  const CMoment first = static_cast<int>(date.year()) * 12 + static_cast<int>(unsigned(date.month())) - 1;
  for (CMoment month = FloorTo(first, step.months);; month += step.months) {
    using namespace std::chrono;
    const sys_days day(year(static_cast<int>(month / 12)) / static_cast<int>(month % 12 + 1) / 1);
    const CMoment shown = CMoment{day.time_since_epoch().count()} * kDay;
    if (!AddShown(axis, range, clock, shown, step.form)) return;
  }
}

// The context at the beginning, and where it changes: at the first moment of a day or a year, not at a tick.
void AddContexts(CTimeAxis& axis, const CMomentRange& range, const CChartClock& clock, ETickForm form) {
  const auto add = [&](CMoment moment) {
    const CString text = ContextText(clock.ShownAt(moment), form);
    if (!text.IsEmpty() && (axis.contexts.empty() || axis.contexts.back().text != text))
      axis.contexts.push_back({moment, text});
  };
  add(range.from);
  if (form >= ETickForm::days) {
    for (const CTimeTick& tick : axis.ticks) add(tick.moment);
    return;
  }
  for (CMoment day = FloorTo(clock.ShownAt(range.from), kDay) + kDay;; day += kDay) {
    const CMoment moment = clock.MomentOf(day);
    if (moment >= range.to) return;
    if (moment > range.from) add(moment);
  }
}

// The names of the zones, and the change from one to the next as a context of its own.
void AddZones(CTimeAxis& axis, const CMomentRange& range, const CChartClock& clock, ETickForm form) {
  axis.zone = clock.ZoneAt(range.from);
  if (form >= ETickForm::days) {
    const CString last = clock.ZoneAt(range.to - 1), middle = clock.ZoneAt((range.from + range.to) / 2);
    for (const CString& name : {middle, last})
      if (axis.zone.Find(name) < 0) axis.zone += " / " + name;
    return;
  }
  const std::vector<CClockPiece> pieces = PiecesOf(range, clock);
  for (std::size_t i = 1; i < pieces.size(); ++i) {
    const CString name = clock.ZoneAt(pieces[i].from);
    if (axis.zone.Find(name) < 0) axis.zone += " / " + name;
    axis.contexts.push_back({pieces[i].from, name});
  }
  std::ranges::stable_sort(axis.contexts, {}, &CTimeTick::moment);
}

// "UTC+5:30".
CString OffsetText(CMoment offset) {
  const auto minutes = static_cast<int>(std::abs(offset) / kMinute);
  CString text = Formatted(offset < 0 ? "UTC-%d" : "UTC+%d", minutes / 60);
  if (minutes % 60) text += Formatted(":%02d", minutes % 60);
  return text;
}

CString ZoneName(CMoment moment) {
  const std::tm local = CTime(FloorTo(moment, kSecond) / kSecond).GetLocalTm();
  return local.tm_zone ? local.tm_zone : "";
}

}  // namespace

CMoment CChartClock::OffsetAt(CMoment moment) const {
  return m_isUtc ? 0 : LocalOffset(FloorTo(moment, kSecond) / kSecond) * kSecond;
}

CMoment CChartClock::MomentOf(CMoment shown) const {
  const CMoment whole = FloorTo(shown, kSecond);
  return m_isUtc ? shown : MomentOfLocal(whole / kSecond) * kSecond + (shown - whole);
}

// Zones without a name of letters are called by their offset alone.
CString CChartClock::ZoneAt(CMoment moment) const {
  if (m_isUtc) return "UTC";
  const CString offset = OffsetText(OffsetAt(moment));
  CString name = ZoneName(moment);
  if (name == "UTC") return name;
  const bool hasLetters = !name.IsEmpty() && name[0] != '+' && name[0] != '-';
  return hasLetters ? name + ", " + offset : offset;
}

CString CChartClock::Text(CMoment moment) const {
  const CMoment shown = ShownAt(moment);
  const CString text = DateText(DateOf(shown)) + " " + TickText(shown, ETickForm::milliseconds);
  return text + " " + (m_isUtc ? CString("UTC") : ZoneName(moment));
}

std::vector<CClockPiece> PiecesOf(const CMomentRange& range, const CChartClock& clock) {
  std::vector<CClockPiece> pieces = {{range.from, range.to, clock.OffsetAt(range.from)}};
  for (CMoment from = range.from; from < range.to; from += kDay) {
    const CMoment to = std::min(from + kDay, range.to);
    if (clock.OffsetAt(to) == pieces.back().offset) continue;
    const CMoment change = FindChange(from, to, clock);
    if (change >= range.to) break;
    pieces.back().to = change;
    pieces.push_back({change, range.to, clock.OffsetAt(change)});
  }
  return pieces;
}

CTimeAxis TimeAxisOf(const CMomentRange& range, const CChartClock& clock, double width) {
  const CTickStep& step = StepFor(static_cast<double>(range.to - range.from), std::max(width, 1.0));
  CTimeAxis axis;
  if (step.months)
    AddMonthTicks(axis, range, clock, step);
  else if (step.length >= kDay)
    AddDayTicks(axis, range, clock, step);
  else
    AddClockTicks(axis, range, clock, step);
  AddContexts(axis, range, clock, step.form);
  AddZones(axis, range, clock, step.form);
  return axis;
}

CString SpanText(CMoment span) {
  constexpr std::pair<CMoment, const char*> kUnits[] = {{kDay, " d "}, {kHour, " h "}, {kMinute, " min "}};
  CMoment rest = std::abs(span);
  const CString sign = span < 0 ? "-" : "";
  if (rest < kSecond) return sign + CString(std::to_string(rest)) + " ms";
  CString text = sign;
  bool isBegun = false;
  for (const auto& [unit, name] : kUnits) {
    isBegun = isBegun || rest >= unit;
    if (isBegun) text += CString(std::to_string(rest / unit)) + name;
    rest %= unit;
  }
  return text + NumberText(static_cast<double>(rest) / 1000, 6) + " s";
}

}  // namespace vastra
