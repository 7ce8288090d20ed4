#include "host/fleet/live_relay.h"

#include <sys/resource.h>
#include <unistd.h>

#include <set>

#include "host/fleet/share_of_time.h"

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kLiveTurn{200}, kSearchPause{1000};
constexpr std::size_t kMostFeeds = 100, kMostLeft = 1000;
constexpr int kNice = 10;  // of the thread: logs go first

}  // namespace

// Loggers that are not running are none of its business: it does not look for their configurations.
CLiveRelay::CLiveRelay(CNatsLink& link, const CFleetNode& node, const std::string& folder)
    : m_link(link),
      m_node(node),
      m_folders{CString(folder), CString(folder + "/.none")},
      m_hearers{[this](const std::string& path) { Leave(m_closed, path); },
                [this](const std::string& line) { Leave(m_faults, line); }},
      m_thread([this] { Main(); }) {}

CLiveRelay::~CLiveRelay() {
  {
    const std::lock_guard guard(m_lock);
    m_isEnding = true;
  }
  m_changed.notify_one();
  m_thread.join();
}

void CLiveRelay::Main() {
  ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), kNice);
  std::unique_lock guard(m_lock);
  while (!m_isEnding) {
    guard.unlock();
    try {
      Turn(std::chrono::steady_clock::now());
    } catch (const std::exception&) {  // without memory: connects to the feeds again
      m_feeds.clear();
    }
    guard.lock();
    m_changed.wait_for(guard, kLiveTurn, [this] { return m_isEnding; });
  }
}

void CLiveRelay::Turn(Time now) {
  if (now >= m_searchDue) Search(now);
  for (auto& [name, feed] : m_feeds) {
    feed.Work(std::chrono::steady_clock::now());
    const std::string message = feed.TakeMessage(now);
    if (!message.empty() && !m_link.Publish(LiveSubject({m_node, name}), message)) feed.SendAll();
  }
}

// A feed that was removed is read to its end.
void CLiveRelay::Search(Time now) {
  CString fault;
  const CShareOfTime share;
  const std::vector<CLoggerPlace> places = FindLoggers(m_folders, fault);
  m_searchDue = now + std::max<Time::duration>(kSearchPause, share.Pause());
  if (places.size() > kMostFeeds)
    fault = m_folders.run + ": there are more than " + CString(std::to_string(kMostFeeds)) +
            " loggers; the first ones are shown to others";
  if (fault != m_fault && !fault.IsEmpty()) m_hearers.fault(fault.Std());
  m_fault = fault;
  std::set<std::string> found;
  for (const CLoggerPlace& place : places)
    if (found.size() < kMostFeeds && found.insert(place.name.Std()).second)
      m_feeds.try_emplace(place.name.Std(), place, m_hearers);
  std::erase_if(m_feeds, [&](const auto& one) { return one.second.IsOver() && !found.contains(one.first); });
}

void CLiveRelay::Leave(std::vector<std::string>& list, const std::string& text) {
  {
    const std::lock_guard guard(m_lock);
    if (list.size() < kMostLeft) list.push_back(text);
  }
  m_link.Wake();
}

std::vector<std::string> CLiveRelay::Take(std::vector<std::string>& list) {
  const std::lock_guard guard(m_lock);
  return std::exchange(list, {});
}

}  // namespace vastra
