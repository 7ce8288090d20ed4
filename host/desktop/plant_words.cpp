#include "host/desktop/plant_words.h"

#include <ctime>

#include "host/common/shown_text.h"
#include "host/desktop/value_rules.h"

namespace vastra {

CString ShortText(const CString& text) {
  constexpr std::size_t kLongest = 300;  // bytes
  return CString(OneLine(Shortened(text.Std().c_str(), kLongest)));
}

CString Because(const CString& reason) { return reason.IsEmpty() ? CString() : ": " + ShortText(reason); }

CString NumberText(std::uint64_t number) { return CString(std::to_string(number)); }

void AppendItem(CString& list, const CString& entry) {
  if (!entry.IsEmpty()) list += (list.IsEmpty() ? "" : ", ") + entry;
}

CString AgeText(std::chrono::seconds age) {
  const std::int64_t all = age.count();
  if (all < 1) return "now";
  return all < 10 ? NumberText(static_cast<std::uint64_t>(all)) + " s" : AgeText(static_cast<double>(all));
}

CString ClockText(const _timeb& time, const _timeb& now) {
  const std::tm local = CTime(time.time).GetLocalTm(), today = CTime(now.time).GetLocalTm();
  const bool isToday = local.tm_year == today.tm_year && local.tm_yday == today.tm_yday;
  char text[64];
  std::strftime(text, sizeof text, isToday ? "%H:%M:%S" : "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

}  // namespace vastra
