#include "host/fleet/folder_watch.h"

#include <sys/inotify.h>

#include <cstring>

namespace vastra {

CFolderWatch::CFolderWatch() : m_queue(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

void CFolderWatch::Add(const std::string& path, const std::string& key) {
  if (m_queue.Get() < 0 || m_keys.size() >= kMost) return;
  const int number =
      ::inotify_add_watch(m_queue.Get(), path.c_str(), IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_ONLYDIR);
  if (number >= 0) m_keys[number] = key;
}

std::vector<CFolderWatch::CNews> CFolderWatch::Take() {
  std::vector<CNews> news;
  char events[std::size_t{64} << 10];
  const ssize_t size = m_queue.Get() < 0 ? 0 : ::read(m_queue.Get(), events, sizeof events);
  inotify_event event = {};
  for (ssize_t place = 0; place < size; place += static_cast<ssize_t>(sizeof event + event.len)) {
    std::memcpy(&event, events + place, sizeof event);
    const auto folder = m_keys.find(event.wd);
    if (folder == m_keys.end()) continue;
    if ((event.mask & IN_IGNORED) != 0)  // the folder is gone
      m_keys.erase(folder);
    else if (event.len > 0)
      news.push_back({folder->second + "/" + (events + place + sizeof event), (event.mask & IN_ISDIR) != 0});
  }
  return news;
}

}  // namespace vastra
