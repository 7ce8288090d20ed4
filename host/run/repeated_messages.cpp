#include "host/run/repeated_messages.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "host/common/shown_text.h"
#include "vastra/core/messenger.h"
#include "vastra/platform/time.h"

namespace vastra {
namespace {

using std::chrono::seconds;

constexpr seconds kMinute{60}, kTellPause{1};
// A message has ended if it has not come for two and a half times its longest pause so far, within bounds,
// and in two scans: a node that is away is asked at longer and longer intervals.
constexpr seconds kLeastQuiet{5}, kMostQuiet{120};
constexpr std::uint64_t kQuietScans = 2;
constexpr std::uint64_t kEventsAMinute = 10;
constexpr const char* kOtherTexts = "more messages";

std::size_t Mix(std::size_t key, std::string_view text) {
  return key * 0x9E3779B97F4A7C15u ^ std::hash<std::string_view>()(text);
}

// What a driver says of a failure can have a time or a number that is another one at each scan.
std::string KeyText(const CRunMessage& message) {
  std::string text = message.text;
  if (std::strcmp(message.link, "CPlcLink") == 0)
    std::erase_if(text, [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
  return text;
}

// Of a node that goes or comes: ten in a minute are shown.
bool IsEvent(const CRunMessage& message) {
  return std::strcmp(message.link, "CNodeLink") == 0 && std::string_view(message.text).starts_with("is ");
}

std::string Times(std::uint64_t count) { return Counted(count, "time"); }

}  // namespace

CRepeatedMessages::CEntry* CRepeatedMessages::Known(std::size_t key) {
  const auto entry = m_entries.find(key);
  return entry == m_entries.end() ? nullptr : &entry->second;
}

CRepeatedMessages::CEntry& CRepeatedMessages::Add(std::size_t key, const CRunMessage& message, Time now,
                                                  const char* text) {
  CEntry& entry = m_entries[key];
  entry = {message.link, message.name, text, message.severity, message.function, IsEvent(message),
           now,          now,          now};
  return entry;
}

// A text that is not known is counted with others once its link has too many texts. A Notice is not: what a
// driver says is a failure.
CRepeatedMessages::CEntry& CRepeatedMessages::Find(const CRunMessage& message, Time now) {
  const std::size_t operation = Mix(static_cast<std::size_t>(message.function), message.name);
  const std::size_t key = Mix(operation, KeyText(message)), others = Mix(operation, kOtherTexts);
  if (CEntry* entry = Known(key)) return *entry;
  if (CEntry* entry = message.severity == severityNotice ? nullptr : Known(others)) return *entry;
  if (m_entries.size() >= kMostMessages) {
    if (CEntry* entry = Known(0)) return *entry;
    return Add(0, {{}, severityWarning, 0, "CRun", "", ""}, now, kOtherTexts);
  }
  const bool hasTooMany = message.severity != severityNotice && ++m_texts[operation] > kMostTexts;
  return hasTooMany ? Add(others, message, now, kOtherTexts) : Add(key, message, now, message.text);
}

bool CRepeatedMessages::Take(const CRunMessage& message, Time now) {
  const std::lock_guard lock(m_mutex);
  CEntry& entry = Find(message, now);
  entry.longestPause = std::max(entry.longestPause, now - entry.last);
  entry.last = now;
  entry.scan = m_scan;
  ++entry.count;
  if (entry.shown < (entry.isEvent ? kEventsAMinute : 1)) return ++entry.shown, true;
  ++entry.untold;
  return false;
}

bool CRepeatedMessages::HasEnded(const CEntry& entry, Time now) const {
  const Span quiet = std::clamp<Span>(entry.longestPause * 5 / 2, kLeastQuiet, kMostQuiet);
  return now - entry.last >= quiet && m_scan >= entry.scan + kQuietScans;
}

void CRepeatedMessages::SayOf(const CEntry& entry, char severity, const std::string& count, const CSay& say) {
  const std::string text = entry.text + " (" + count + ")";
  say({{}, severity, entry.function, entry.link.c_str(), entry.name.c_str(), text.c_str()});
}

// Returns whether the message has ended.
bool CRepeatedMessages::Tell(CEntry& entry, Time now, const CSay& say) const {
  const bool hasEnded = HasEnded(entry, now), isMinute = now - entry.told >= kMinute;
  if (!hasEnded && !isMinute) return false;
  if (entry.untold > 0 && hasEnded && !entry.isEvent)
    SayOf(entry, severityNotice,
          "ended after " + Times(entry.count) + ", " + InHours(entry.last - entry.first).Std(), say);
  else if (entry.untold > 0)
    SayOf(entry, entry.severity, "again " + Times(entry.untold) + " in the last minute", say);
  entry.untold = 0;
  entry.told = now;
  if (entry.isEvent) entry.shown = 0;
  return hasEnded;
}

void CRepeatedMessages::Report(Time now, bool isScanDone, const CSay& say) {
  const std::lock_guard lock(m_mutex);
  m_scan += isScanDone;
  if (m_entries.empty() || now < m_due) return;
  if (now >= m_minute) m_texts.clear(), m_minute = now + kMinute;
  m_due = now + kTellPause;
  for (auto entry = m_entries.begin(); entry != m_entries.end();) {
    entry = Tell(entry->second, now, say) ? m_entries.erase(entry) : std::next(entry);
  }
}

void CRepeatedMessages::End(const CSay& say) {
  const std::lock_guard lock(m_mutex);
  for (const auto& [key, entry] : m_entries)
    if (entry.untold > 0)
      SayOf(entry, entry.severity, "again " + Times(entry.untold) + " until the end", say);
  m_entries.clear();
  m_texts.clear();
}

}  // namespace vastra
