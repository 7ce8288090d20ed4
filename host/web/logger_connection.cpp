#include "host/web/logger_connection.h"

#include <algorithm>

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kShortestPause{500}, kLongestPause{5000};
// Each of ten samples a second comes, also when some are late.
constexpr std::chrono::milliseconds kSampleInterval{75};
constexpr int kMostReads = 8;  // of a feed, heard in one turn

}  // namespace

void CLoggerConnection::Work(Time now, std::mutex& lock) {
  if (!m_client && now >= m_retry)
    m_client = std::make_unique<CFeedClient>(
        m_place.feed, CClientRequest{{"sample", "counts", "message", "log"}, kSampleInterval});
  for (int i = 0; i < kMostReads && m_client && Hear(now, lock); ++i) {
  }
  if (!m_client || !m_client->HasEnded()) return;
  {
    const std::lock_guard guard(lock);
    m_record->Fail(m_client->Fault());
  }
  m_client.reset();
  m_pause = std::clamp(2 * m_pause, kShortestPause, kLongestPause);
  m_retry = now + m_pause;
}

// Whether there was something.
bool CLoggerConnection::Hear(Time now, std::mutex& lock) {
  bool hasHeard = false;
  m_client->Poll();
  while (std::optional<CFeedEvent> event = m_client->Take()) {
    const std::lock_guard guard(lock);
    m_record->Note(*event, now);
    hasHeard = true;
  }
  if (hasHeard) m_pause = {};
  return hasHeard;
}

}  // namespace vastra
