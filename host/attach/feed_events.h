// The lines of a logger's feed as plain values, events. A field that a line lacks, or that has another type
// than it should, has its default; fields that are not known are ignored. All texts come from outside: a host
// passes them through Printable before it shows them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/common/message_text.h"
#include "vastra/logfiles/log_ledger.h"

namespace vastra {

constexpr int kFeedVersion = 1;

// An output or a summary. Earlier loggers say name and folder alone.
struct CStageFacts {
  std::string name, folder;
  bool binary = true, text = false;  // the forms of its logs
  std::optional<std::uint64_t> maxLogs, maxSamples;
};

// The variables of a node.
struct COriginFacts {
  std::vector<std::string> variables;
  std::string alive;  // the one that is 0 while the node is away; empty: none

  bool operator==(const COriginFacts&) const = default;
};

struct CUnitFacts {
  std::string variable, unit;

  bool operator==(const CUnitFacts&) const = default;
};

// Who the logger is. It comes first, and again whenever something in it changes.
struct CHelloLine {
  int feed = 0;  // the version
  std::string name, vastra, configuration;
  std::int64_t pid = 0;
  _timeb started;
  double period = 0;                   // milliseconds
  std::vector<std::string> variables;  // of the samples to come; empty before a run is open
  std::vector<CUnitFacts> units;       // of variables that have one
  std::vector<std::string> nodes, writes;
  std::vector<COriginFacts> origins;  // of the nodes; empty: the logger does not say
  std::int64_t replayed = 0;          // logs that are the input in place of nodes
  std::vector<CStageFacts> outputs, summaries;
  bool smart = false;
};

// A message of a link, with texts of its own.
struct CMessageLine {
  std::uint64_t number = 0;
  _timeb time;
  char severity = 0, function = 0;
  std::string link, name, text;

  // Valid while this object exists.
  CRunMessage Message() const { return {time, severity, function, link.c_str(), name.c_str(), text.c_str()}; }
};

struct CNodeFacts {
  std::string name;
  bool up = false;
  bool answered = true;  // since the start
  _timeb since;
  std::string reason;
  std::optional<_timeb> next;  // when it is asked again
};

struct CFolderFacts {
  std::string path;
  std::optional<std::uint64_t> free;  // bytes; none: the folder cannot be asked
};

// A log that could not be saved and waits.
struct CUnsavedFacts {
  std::string log, path, reason;
  std::uint64_t rows = 0;
};

// What the logger does. It comes whenever something in it changes, and every 5 seconds.
struct CStateLine {
  std::string state;  // one of kFeedStates, or a word of a later version
  _timeb since;
  std::string reason;
  std::vector<CNodeFacts> nodes, writes;
  std::vector<CFolderFacts> folders;
  std::vector<CUnsavedFacts> unsaved;
  std::optional<CMessageLine> lastError;
  std::optional<_timeb> lastSample;
  std::optional<double> lastSampleAge;  // seconds
};
constexpr const char* kFeedStates[] = {"opening", "running", "waiting", "stopping", "stopped"};

struct CSampleLine {
  std::uint64_t number = 0;  // from 1, of the run
  _timeb time;
  std::vector<float> values;  // NaN also for a variable that does not exist
};

// The account of an output or a summary.
struct CLedgerFacts {
  std::string name;
  bool isSummary = false;
  CLogLedger ledger;
};

struct CCountsLine {
  std::uint64_t read = 0, failedReads = 0, late = 0, scans = 0;
  struct {
    std::uint64_t smart = 0, outputs = 0, summaries = 0, plcWrite = 0, trend = 0;
  } failedWrites;
  struct {
    std::uint64_t closed = 0, failed = 0;
  } logs;  // since the process started
  std::vector<CLedgerFacts> ledger;
};

// A log that has been closed, or could not be saved.
struct CLogLine {
  bool isClosed = false;
  std::string log, name, path, reason;  // reason: why it could not be saved
  std::uint64_t rows = 0;
  std::optional<_timeb> first, last;
  std::vector<std::string> variables;
};

// In place of messages or logs that this reader was too slow for.
struct CDroppedLine {
  std::uint64_t messages = 0, logs = 0;
};

// The messages that the logger had kept before the connection have come.
struct CKeptLine {};

// What the logger says before it closes the connection.
struct CErrorLine {
  std::string text;
};

using CFeedEvent = std::variant<CHelloLine, CStateLine, CSampleLine, CCountsLine, CMessageLine, CLogLine,
                                CDroppedLine, CKeptLine, CErrorLine>;

// The value of a line, without its line end; empty for a type that is not known. Throws CJsonFault for a line
// that is not an object in JSON.
std::optional<CFeedEvent> ParseFeedEvent(std::string_view line);

}  // namespace vastra
