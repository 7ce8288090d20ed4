#include "host/web/logger_watch.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "host/attach/feed_poll.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLookPause{2}, kListPause{1}, kBeatPause{5};
constexpr std::chrono::minutes kKept{1};             // a logger that is not found any more
constexpr std::chrono::milliseconds kTurnPause{50};  // what comes in this time is one turn

int MakeWake() {
  const int file = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  if (file < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  return file;
}

}  // namespace

CLoggerWatch::CLoggerWatch(const CLoggerFolders& places, CFolders folders)
    : m_places(places), m_folders(std::move(folders)), m_wake(MakeWake()) {
  Look(Clock::now());
  m_thread = std::thread([this] { Main(); });
}

CLoggerWatch::~CLoggerWatch() {
  m_isEnding = true;
  Wake();
  m_thread.join();
  ::close(m_wake);
}

std::shared_ptr<CEventStream> CLoggerWatch::Subscribe(const CStreamRequest& request,
                                                      std::function<void()> onReady) {
  auto stream = std::make_shared<CEventStream>(m_board, request, std::move(onReady));
  {
    const std::lock_guard lock(m_streamLock);
    std::erase_if(m_streams, [](const auto& one) { return one.expired(); });
    if (m_streams.size() >= kMostStreams) return nullptr;
    m_streams.push_back(stream);
  }
  Wake();
  return stream;
}

void CLoggerWatch::Wake() {
  const std::uint64_t one = 1;
  // The only error is a counter that is full, and then the thread wakes up as well.
  [[maybe_unused]] const ssize_t written = ::write(m_wake, &one, sizeof one);
}

void CLoggerWatch::Main() {
  while (!m_isEnding) {
    const Time now = Clock::now();
    if (now >= m_lookDue) Look(now);
    Turn(now);
    Wait(now);
  }
}

void CLoggerWatch::Turn(Time now) {
  for (auto& [name, heard] : m_heard) heard.connection.Work(now, m_board->lock);
  const std::vector<std::shared_ptr<CEventStream>> streams = Streams();
  if (streams.empty()) {
    const std::lock_guard lock(m_board->lock);
    m_board->list.reset();
    m_listDue = {};
  } else if (now >= m_listDue) {
    MakeList(now);
  }
  if (now >= m_beatDue) {
    const std::lock_guard lock(m_board->lock);
    ++m_board->beats;
    m_beatDue = now + kBeatPause;
  }
  for (const auto& stream : streams) stream->Tell();
}

std::vector<std::shared_ptr<CEventStream>> CLoggerWatch::Streams() {
  std::vector<std::shared_ptr<CEventStream>> streams;
  const std::lock_guard lock(m_streamLock);
  for (const auto& one : m_streams)
    if (auto stream = one.lock()) streams.push_back(std::move(stream));
  return streams;
}

void CLoggerWatch::MakeList(Time now) {
  m_listDue = now + kListPause;
  std::string text = JsonText(ListJson());
  const std::lock_guard lock(m_board->lock);
  if (!m_board->list || m_board->list->Text() != text) m_board->list = ShareText([text] { return text; });
}

// The feeds of many loggers do not wake the thread one by one.
void CLoggerWatch::Wait(Time turn) {
  std::uint64_t count;
  const int wake[] = {m_wake};
  if (!WaitForFeeds({}, wake, turn + kTurnPause)) {
    std::vector<CFeedClient*> clients;
    Time until = std::min(m_lookDue, m_beatDue);
    if (m_listDue != Time{}) until = std::min(until, m_listDue);
    for (const auto& [name, heard] : m_heard) {
      until = std::min(until, heard.connection.Due());
      if (CFeedClient* client = heard.connection.Client()) clients.push_back(client);
    }
    WaitForFeeds(clients, wake, until);
  }
  [[maybe_unused]] const ssize_t read = ::read(m_wake, &count, sizeof count);
}

void CLoggerWatch::Look(Time now) {
  m_lookDue = now + kLookPause;
  CString fault;
  const std::vector<CLoggerPlace> found = FindLoggers(m_places, fault);
  Admit(found, now);
  Forget(now);
  const auto isNotHeard = [this](const CLoggerPlace& place) { return !m_heard.contains(place.name.Std()); };
  if (fault.IsEmpty() && std::any_of(found.begin(), found.end(), isNotHeard))
    fault =
        CString("there are more than " + std::to_string(kMostLoggers) + " loggers; the others are left out");
  const std::lock_guard lock(m_board->lock);
  m_board->searchFault = fault.Std();
}

void CLoggerWatch::Admit(const std::vector<CLoggerPlace>& found, Time now) {
  for (const CLoggerPlace& place : found) {
    const std::string& name = place.name.Std();
    if (const auto known = m_heard.find(name); known != m_heard.end()) {
      known->second.found = now;
    } else if (m_heard.size() < kMostLoggers) {
      auto record = std::make_shared<CLoggerRecord>(place);
      m_heard.emplace(name, CHeard{CLoggerConnection(place, record), now});
      const std::lock_guard lock(m_board->lock);
      m_board->loggers.emplace(name, std::move(record));
      ++m_board->changes;
    }
  }
}

void CLoggerWatch::Forget(Time now) {
  for (auto heard = m_heard.begin(); heard != m_heard.end();) {
    if (now - heard->second.found < kKept || heard->second.connection.Client()) {
      ++heard;
      continue;
    }
    const std::lock_guard lock(m_board->lock);
    m_board->loggers.erase(heard->first);
    ++m_board->changes;
    heard = m_heard.erase(heard);
  }
}

}  // namespace vastra
