// What a check of a configuration finds, in the words of the forms: the rows of the window, and what it says
// of them all. CRun finds the faults; these rules write them for people.
#pragma once

#include "host/desktop/place_words.h"
#include "host/run/run.h"

namespace vastra {

struct CCheckEntry {
  bool isError = false;     // prevents a start; else a warning
  bool isHarmless = false;  // a start does not ask about it
  CString key;              // of the place in the configuration
  CString place, text;      // in words
  CString detail = {};      // more lines, such as the equation with the fault marked; can be empty

  CString Line() const { return place + ": " + text; }
};

// All that is wrong with the plan of run: errors first, in the order of the configuration. A stage that
// cannot open is an error, too.
std::vector<CCheckEntry> CheckEntries(const CRun& run, const CRunPlan& plan, const CPlaceWords& words);

bool HasError(const std::vector<CCheckEntry>& entries);
// One line about all entries: "2 errors and 1 warning: the logger cannot start".
CString Verdict(const std::vector<CCheckEntry>& entries);

}  // namespace vastra
