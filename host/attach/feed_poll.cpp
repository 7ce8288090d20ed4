#include "host/attach/feed_poll.h"

#include <poll.h>

#include <algorithm>

namespace vastra {

bool WaitForFeeds(std::span<CFeedClient* const> clients, std::span<const int> files,
                  CFeedClient::Time until) {
  std::vector<pollfd> all;
  for (const int file : files) all.push_back({file, POLLIN, 0});  // a negative one is ignored
  for (const CFeedClient* client : clients) {
    if (client->HasEnded()) continue;
    until = std::min(until, client->Due());
    if (client->Events()) all.push_back({client->File(), client->Events(), 0});
  }
  const auto rest = std::max(until - std::chrono::steady_clock::now(), CFeedClient::Time::duration::zero());
  const auto wait = std::min(rest, CFeedClient::Time::duration(std::chrono::hours(1)));
  const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(wait).count();
  if (::poll(all.data(), all.size(), static_cast<int>(milliseconds)) <= 0) return false;
  return std::any_of(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(files.size()),
                     [](const pollfd& one) { return one.revents != 0; });
}

}  // namespace vastra
