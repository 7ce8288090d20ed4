// Waiting for several feeds at once.
#pragma once

#include <span>

#include "host/attach/feed_client.h"

namespace vastra {

// Waits until one of the clients is to be polled, one of files can be read, until comes, or a signal. Clients
// that have ended and negative files are left out. Returns whether one of files can be read.
bool WaitForFeeds(std::span<CFeedClient* const> clients, std::span<const int> files, CFeedClient::Time until);

}  // namespace vastra
