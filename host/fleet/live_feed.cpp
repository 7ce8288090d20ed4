#include "host/fleet/live_feed.h"

#include <algorithm>

#include "host/common/json_text.h"
#include "host/fleet/share_of_time.h"

namespace vastra {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kShortestRetry{500}, kLongestRetry{5000};
constexpr milliseconds kMessagePause{1000}, kAllPause{10'000};
constexpr int kMostReads = 8;          // of a feed, heard in one turn
constexpr std::size_t kFrame = 64;     // bytes of a message beside its lines
constexpr std::size_t kMostName = 16;  // of a type, with its marks

}  // namespace

void CLiveFeed::Work(Time now) {
  if (now < m_due) return;
  const CShareOfTime share;
  if (!m_client && now >= m_retry)
    m_client = std::make_unique<CFeedClient>(m_place.feed,
                                             CClientRequest{{"sample", "counts", "log"}, kMessagePause});
  for (int i = 0; i < kMostReads && m_client && Hear(); ++i) {
  }
  if (m_client && m_client->HasEnded()) End(now);
  m_due = now + share.Pause();
}

// Whether there was something.
bool CLiveFeed::Hear() {
  bool hasHeard = false;
  m_client->Poll();
  while (const std::optional<CFeedEvent> event = m_client->Take()) {
    Note(*event);
    hasHeard = true;
  }
  return hasHeard;
}

void CLiveFeed::Note(const CFeedEvent& event) {
  m_pause = {};
  m_fault.clear();
  if (!m_ended.empty()) m_lines = {};  // of the logger before
  m_ended.clear();
  if (event.index() < m_lines.size()) Keep(m_lines[event.index()], kLiveLines[event.index()]);
  if (const auto* const log = std::get_if<CLogLine>(&event); log && log->isClosed)
    m_hearers.closed(log->path);
}

void CLiveFeed::Keep(CLine& line, const char* type) {
  const std::string& text = m_client->Line();
  if (text.size() + kFrame > kMostLive) {
    if (!std::exchange(line.isTold, true))
      m_hearers.fault(m_place.name.Std() + ": \"" + type +
                      "\" of its feed has more than 512 KiB and is not shown to others");
    line.text.clear();
    return;
  }
  line.isDue = line.isDue || line.text != text;
  line.text = text;
}

void CLiveFeed::End(Time now) {
  const std::string fault = m_client->Fault();
  m_client.reset();
  m_pause = std::clamp(2 * m_pause, kShortestRetry, kLongestRetry);
  m_retry = now + m_pause;
  if (m_hasSpoken || !m_lines[kLiveHello].text.empty()) {
    m_ended = fault;
    return;
  }
  // A socket that a logger has left says nothing new.
  if (fault != m_fault && !fault.starts_with("no logger runs here"))
    m_hearers.fault(m_place.name.Std() + ": its feed is not read: " + fault);
  m_fault = fault;
}

// What does not fit waits for the next message.
std::string CLiveFeed::TakeMessage(Time now) {
  // The first message says who the logger is and what it does.
  const bool hasBegun = m_hasSpoken || !m_ended.empty() || !m_lines[kLiveState].text.empty();
  if (now < m_messageDue || !hasBegun) return "";
  m_messageDue = now + kMessagePause;
  if (now >= m_allDue) {
    m_allDue = now + kAllPause;
    for (CLine& line : m_lines) line.isDue = !line.text.empty();
  }
  std::string text = R"({"live":1)";
  for (std::size_t i = 0; i < m_lines.size(); ++i) {
    CLine& line = m_lines[i];
    if (!line.isDue || text.size() + line.text.size() + kMostName > kMostLive) continue;
    text.append(",\"").append(kLiveLines[i]).append("\":").append(line.text);
    line.isDue = false;
  }
  m_hasSpoken = true;
  if (!m_ended.empty() && !m_client) {
    text.append(",\"ended\":").append(JsonText(m_ended));
    m_ended.clear();
    m_hasSpoken = false;
    m_lines = {};
    m_allDue = {};
  }
  return text + "}";
}

}  // namespace vastra
