#include "host/fleet/told_once.h"

#include <algorithm>
#include <utility>

#include "host/common/shown_text.h"

namespace vastra {

bool CToldOnce::MayPrint(Time now) {
  if (now - m_minute >= kSilence) {
    if (m_leftOut > 0) m_print(std::to_string(m_leftOut) + " more lines were left out");
    m_minute = now;
    m_printed = 0;
    m_leftOut = 0;
  }
  if (++m_printed <= kMostInMinute) return true;
  ++m_leftOut;
  return false;
}

void CToldOnce::Tell(const std::string& line, Time now) {
  if (m_told.size() >= kMost)
    std::erase_if(m_told, [&](const auto& one) { return now - one.second.last >= kEnd; });
  if (m_told.size() >= kMost) m_told.clear();
  const auto [found, isNew] = m_told.try_emplace(line, CTold{now, now});
  CTold& told = found->second;
  const bool isNews = isNew || now - std::exchange(told.last, now) >= kEnd;
  if (!isNews && now - told.printed < told.silence) {
    ++told.repeats;
    return;
  }
  if (!MayPrint(now)) return;
  m_print(Printable(line) + (told.repeats > 0 ? " (" + std::to_string(told.repeats) + " more times)" : ""));
  told = {now, now, isNews ? kSilence : std::min(2 * told.silence, kLongestSilence)};
}

}  // namespace vastra
