// What the nodes of a fleet report, and how much waits at the servers.
#pragma once

#include "host/fleet/nats_link.h"

namespace vastra {

// {"servers": {"messages", "bytes"} of the chunks, "nodes": [{"site", "node", "waiting", "sent", "archived",
// each with "files" and "bytes", "oldest": seconds or null, "contact": seconds since the last report, ...}]},
// by site and node. hasChunks: the servers count the chunks of each node that wait in the stream, as
// "chunks". Throws CNatsFault.
CJson FleetStatus(CNatsLink& link, bool hasChunks);
// A table of it.
std::string FleetTable(const CJson& status, bool hasChunks);

}  // namespace vastra
