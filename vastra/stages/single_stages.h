// Shared by the stages that own a list of single stages, one for each entry of the configuration.
#pragma once

#include <vector>

#include "vastra/logfiles/log_ledger.h"
#include "vastra/platform/list.h"

namespace vastra {

// Makes a Single for each of configs, first to last, with a copy of it as its options, and opens them in that
// order. 1, or 0 with an empty list: the destructors close those already open. prepare is called for each
// before any of them opens, with its index in configs.
template <class Single, class Config, class Prepare>
int OpenSingles(CList<Single*, Single*>& singles, const CList<Config*, Config*>& configs, CStringArray& names,
                Prepare prepare) {
  DeleteAll(singles);
  int place = 0;
  for (const Config* config : configs) {
    singles.AddTail(new Single);
    *singles.GetTail()->GetOptions() = *config;
    prepare(*singles.GetTail(), place++);
  }
  for (Single* single : singles)
    if (!single->Open(names)) return DeleteAll(singles), 0;
  return 1;
}

template <class Single, class Config>
int OpenSingles(CList<Single*, Single*>& singles, const CList<Config*, Config*>& configs,
                CStringArray& names) {
  return OpenSingles(singles, configs, names, [](Single&, int) {});
}

// Restarts all, first to last, whatever the results.
template <class Single>
void RestartSingles(const CList<Single*, Single*>& singles) {
  for (Single* single : singles) single->Restart();
}

template <class Single>
std::vector<CLogLedger> LedgersOf(const CList<Single*, Single*>& singles) {
  std::vector<CLogLedger> ledgers;
  for (const Single* single : singles) ledgers.push_back(single->GetLedger());
  return ledgers;
}

// The same for singles that log. ledgers gets their accounts; it stays as it is if there are none.
template <class Single>
void CloseSingles(CList<Single*, Single*>& singles, std::vector<CLogLedger>& ledgers) {
  for (Single* single : singles) single->Close();
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
