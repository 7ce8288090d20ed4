// The present state of loggers, asked of their feeds, and whether they are well.
#pragma once

#include <map>

#include "host/attach/feed_events.h"
#include "host/attach/find_loggers.h"

namespace vastra {

struct CLoggerStatus {
  CLoggerPlace place;
  std::string fault;  // why the logger does not answer; empty: it does
  CHelloLine hello;   // with what follows if it does
  CStateLine state;
  std::optional<CCountsLine> counts;  // none before there is a run
  bool awaitsCounts = false;          // none have come, but there was no time for them yet
  std::vector<std::string> problems;  // a line for each thing that is not well

  bool IsUp() const { return fault.empty(); }
  bool IsWell() const { return problems.empty(); }
};

// A name for each account, which no other one of the list has: the name of the output or summary, or its key
// if the name is empty or not the only one.
std::vector<std::string> LedgerNames(const std::vector<CLedgerFacts>& ledger);

// The rows that were lost by cause, at most 20 causes; the others, and rows without a cause, are under "".
std::map<std::string, std::uint64_t> LossesOf(const CLogLedger& ledger);

// What problems is for the rest of status.
std::vector<std::string> ProblemsOf(const CLoggerStatus& status);

// Asks all loggers at the same time and returns after 2 seconds at most, or when stop, a file, can be read.
std::vector<CLoggerStatus> AskLoggers(const std::vector<CLoggerPlace>& places, int stop = -1);

}  // namespace vastra
