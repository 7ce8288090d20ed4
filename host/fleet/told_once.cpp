#include "host/fleet/told_once.h"

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
    std::erase_if(m_told, [&](const auto& one) { return now - one.second.time >= kSilence; });
  if (m_told.size() >= kMost) m_told.clear();
  const auto [found, isNew] = m_told.try_emplace(line, CTold{now});
  CTold& told = found->second;
  if (!isNew && now - told.time < kSilence) {
    ++told.repeats;
    return;
  }
  if (!MayPrint(now)) return;
  m_print(Printable(line) + (told.repeats > 0 ? " (" + std::to_string(told.repeats) + " more times)" : ""));
  told = {now};
}

}  // namespace vastra
