#include "host/fleet/distant_feeds.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/attach/find_loggers.h"

namespace vastra {
namespace {

constexpr std::size_t kMostLeftFolders = 2000;
constexpr std::chrono::seconds kFeedKept{60}, kRemovePause{1};
constexpr std::chrono::milliseconds kServed{100};
constexpr mode_t kFeedFolderMode = 0755;

// Loggers with different names have different folders, dots or not.
std::string FolderPart(const std::string& name) {
  std::string part;
  for (const char byte : name) part += byte == '.' ? "=2E" : byte == '=' ? "=3D" : std::string(1, byte);
  return part;
}

std::string FeedFolderOf(const CFleetLogger& logger) {
  return FolderPart(logger.node.site) + "." + FolderPart(logger.node.name) + "." + FolderPart(logger.name);
}

// A socket that is taken can be removed with its folder.
void RemoveLeft(const std::filesystem::path& folder) {
  std::error_code fault;
  const std::string socket = (folder / "feed").string();
  if (!std::filesystem::is_socket(std::filesystem::symlink_status(socket, fault))) return;
  {
    CFeedSocket taken{CString(socket)};
    if (!taken.Open().IsEmpty()) return;
  }
  std::filesystem::remove(folder, fault);
}

}  // namespace

CDistantFeeds::CDistantFeeds(const std::string& folder, CToldOnce& log) : m_folder(folder), m_log(log) {
  std::filesystem::create_directories(folder);
  std::vector<std::filesystem::path> left;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (left.size() < kMostLeftFolders && std::ranges::count(entry.path().filename().string(), '.') == 2)
      left.push_back(entry.path());
  for (const std::filesystem::path& one : left) RemoveLeft(one);
}

CDistantFeeds::~CDistantFeeds() {
  while (!m_feeds.empty()) Remove(std::string(m_feeds.begin()->first));
}

void CDistantFeeds::Hear(const CFleetLogger& logger, const CLiveMessage& message, Time now) {
  const std::string name = FeedFolderOf(logger);
  auto found = m_feeds.find(name);
  const bool isNew = found == m_feeds.end();
  if (isNew && message.lines[kLiveHello].text.empty()) return;  // it comes within 10 seconds
  if (const std::string fault = m_gate.Admit(logger, message); !fault.empty()) return m_log.Tell(fault);
  if (isNew) {
    std::unique_ptr<CFeedOfOne> made = Make(logger, name);
    if (!made) return m_gate.Forget(logger);
    found = m_feeds.emplace(name, std::move(made)).first;
  }
  found->second->content.Note(message, now);
}

std::unique_ptr<CDistantFeeds::CFeedOfOne> CDistantFeeds::Make(const CFleetLogger& logger,
                                                               const std::string& name) {
  const std::string who = logger.node.site + "/" + logger.node.name + "/" + logger.name;
  if (!IsLoggerName(CString(name))) {
    m_log.Tell(who + ": has no feed: its name is too long");
    return nullptr;
  }
  const std::string folder = m_folder + "/" + name;
  if (::mkdir(folder.c_str(), kFeedFolderMode) != 0 && errno != EEXIST) {
    m_log.Tell(folder + ": " + std::strerror(errno));
    return nullptr;
  }
  auto made = std::make_unique<CFeedOfOne>(logger, folder + "/feed");
  if (const CString fault = made->port.Open(); !fault.IsEmpty()) {
    m_log.Tell(fault.Std());
    ::rmdir(folder.c_str());
    return nullptr;
  }
  return made;
}

void CDistantFeeds::Remove(const std::string& name) {
  m_gate.Forget(m_feeds.at(name)->logger);
  m_feeds.erase(name);  // with its socket
  ::rmdir((m_folder + "/" + name).c_str());
}

void CDistantFeeds::Turn(Time now) {
  RemoveGone(now);
  m_polled.clear();
  Time until = now + kServed;
  for (const auto& [name, feed] : m_feeds) until = std::min(until, feed->port.AddPolled(now, m_polled));
  const auto rest =
      std::chrono::ceil<std::chrono::milliseconds>(std::max(until - now, Time::duration::zero()));
  if (::poll(m_polled.data(), m_polled.size(), static_cast<int>(rest.count())) < 0)
    for (pollfd& polled : m_polled) polled.revents = 0;
  now = std::chrono::steady_clock::now();
  for (const auto& [name, feed] : m_feeds) feed->port.Work(now, m_polled);
}

void CDistantFeeds::RemoveGone(Time now) {
  if (now < m_removeDue) return;
  m_removeDue = now + kRemovePause;
  std::vector<std::string> gone;
  for (const auto& [name, feed] : m_feeds)
    if (now - feed->content.Heard() >= kFeedKept) gone.push_back(name);
  for (const std::string& name : gone) Remove(name);
}

}  // namespace vastra
