// The messages about loggers, on vastra.live.SITE.NODE.LOGGER: an object with the newest lines of the feed of
// the logger as they are, each under its type:
//
//   {"live":1,"hello":{"type":"hello",...},"state":{...},"sample":{...},"counts":{...}}
//
// A line that has not changed since the message before is left out; every 10 seconds all of them come. The
// last message of a logger is {"live":1,"ended":"why"}.
#pragma once

#include <array>
#include <stdexcept>

#include "host/attach/feed_events.h"
#include "host/fleet/fleet_names.h"

namespace vastra {

// A logger of a node.
struct CFleetLogger {
  CFleetNode node;
  std::string name;

  bool operator==(const CFleetLogger&) const = default;
};
std::string LiveSubject(const CFleetLogger& logger);
// Empty for a subject that is not one of a logger that can be.
std::optional<CFleetLogger> ParseLiveSubject(std::string_view subject);

// The types of lines in a message are the first ones of CFeedEvent.
constexpr std::array<const char*, 4> kLiveLines = {"hello", "state", "sample", "counts"};
constexpr std::size_t kLiveHello = 0, kLiveState = 1;
constexpr std::size_t kMostLive = std::size_t{512} << 10;  // bytes of a message

struct CLiveMessage {
  struct CLine {
    std::string text;  // without its end; empty: it is not in the message
    CFeedEvent event;
  };
  std::array<CLine, kLiveLines.size()> lines;
  std::optional<std::string> ended;  // why
};

class CLiveFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws CLiveFault for what is no such message.
CLiveMessage ParseLive(std::string_view data);

}  // namespace vastra
