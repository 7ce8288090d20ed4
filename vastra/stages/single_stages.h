// Shared by the stages that own a list of single stages, one for each entry of the configuration.
#pragma once

#include <vector>

#include "vastra/logfiles/log_ledger.h"
#include "vastra/platform/list.h"

namespace vastra {

// Calls action for each of singles, first to last, until it returns 0. place has the index of the single
// meanwhile, else -1: a host can tell which one a message is about. Returns the last result.
template <class Single, class Action>
int ForEach(const CList<Single*, Single*>& singles, int& place, Action action) {
  int result = 1;
  place = 0;
  for (Single* single : singles) {
    result = action(*single);
    if (!result) break;
    ++place;
  }
  place = -1;
  return result;
}

// Makes a Single for each of configs, first to last, with a copy of it as its options, and opens them in that
// order. 1, or 0 with an empty list: the destructors close those already open. prepare is called for each
// before any of them opens, with its index in configs.
template <class Single, class Config, class Prepare>
int OpenSingles(CList<Single*, Single*>& singles, const CList<Config*, Config*>& configs, CStringArray& names,
                int& place, Prepare prepare) {
  DeleteAll(singles);
  int index = 0;
  for (const Config* config : configs) {
    singles.AddTail(new Single);
    *singles.GetTail()->GetOptions() = *config;
    prepare(*singles.GetTail(), index++);
  }
  const int opened = ForEach(singles, place, [&names](Single& single) { return single.Open(names); });
  if (!opened) DeleteAll(singles);
  return opened;
}

// Restarts all, first to last, whatever the results.
template <class Single>
void RestartSingles(const CList<Single*, Single*>& singles, int& place) {
  ForEach(singles, place, [](Single& single) { return single.Restart(), 1; });
}

template <class Single>
std::vector<CLogLedger> LedgersOf(const CList<Single*, Single*>& singles) {
  std::vector<CLogLedger> ledgers;
  for (const Single* single : singles) ledgers.push_back(single->GetLedger());
  return ledgers;
}

// The same for singles that log. ledgers gets their accounts; it stays as it is if there are none.
template <class Single>
void CloseSingles(CList<Single*, Single*>& singles, int& place, std::vector<CLogLedger>& ledgers) {
  ForEach(singles, place, [](Single& single) { return single.Close(), 1; });
  if (singles.GetCount() > 0) ledgers = LedgersOf(singles);
  DeleteAll(singles);
}

// Closes all, first to last, and then deletes them.
template <class Single>
void CloseSingles(CList<Single*, Single*>& singles) {
  for (Single* single : singles) single->Close();
  DeleteAll(singles);
}

}  // namespace vastra
