// The streams of a fleet: what init makes, and what the other commands use of them.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "host/fleet/fleet_names.h"
#include "host/fleet/nats_link.h"

namespace vastra {

constexpr const char* kLogStream = "VASTRA_LOGS";       // chunks, until the archive has them
constexpr const char* kReceiptStream = "VASTRA_DONE";   // receipts, for nodes that were away
constexpr const char* kStatusStream = "VASTRA_STATUS";  // the newest report of each node

struct CStreamWishes {
  std::int64_t replicas = 0;  // 0: as it is, and at least 3
  std::int64_t maxBytes = 0;  // of the chunks; 0: as it is, and without a limit if it is new
};

// Makes the streams, or raises what they have. A line about each goes to out, with what an administrator has
// set otherwise, which stays. Throws CNatsFault, also for a stream that has more than is wished, or that
// cannot be of use: nothing is changed then.
void MakeStreams(CNatsLink& link, const CStreamWishes& wishes, std::ostream& out);

// What an administrator has to set, as a configuration of the server with the users of nodes. A node without
// a name is the user by which the server of a site is a leaf.
void PrintServerSettings(const std::vector<CFleetNode>& nodes, const std::string& domain, std::ostream& out);

// Subjects of the servers' interface.
std::string StreamRequest(const char* operation, const char* stream);  // "INFO", "CREATE", ...
std::string NewestRequest(const char* stream, const std::string& subject);
std::string InboxOf(const CFleetNode& node);
// Nanoseconds since 1970 of a time that a server says, such as "2026-03-01T12:00:00.25Z".
std::optional<std::uint64_t> ServerTime(const std::string& text);

}  // namespace vastra
