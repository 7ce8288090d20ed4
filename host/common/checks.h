// The checks of a configuration before its stages open: what a host refuses, and settings that are valid but
// probably not intended.
#pragma once

#include <vector>

#include "host/common/stage_names.h"

namespace vastra {

struct CFinding {
  bool isRefused;
  CString key;              // the path of the key, such as "outputs[1].maxLogs"
  CString text;             // what is wrong with it
  bool mayPass = false;     // without a change of the configuration: what is missing can come
  bool isHarmless = false;  // no sample and no log is affected unless that is intended

  CString Line() const { return key + ": " + text; }
};

// What is done with the folders of the logs.
enum class EFolders {
  leaveOut,  // nothing
  attempt,   // a temporary file is made in each and removed
  create     // the same, and a folder that is missing is made first
};

struct CCheckOptions {
  bool keepsLogs = true;  // by a policy; false: what would be refused is a warning
  EFolders folders = EFolders::attempt;
  bool replayWrites = true;               // a replay writes to PLCs
  const CStringList* replayed = nullptr;  // the whole list of a replay; null: that of the configuration
};

// All findings, each once, in the order of the configuration file. names: those of GivenNames.
std::vector<CFinding> CheckConfiguration(const CConfiguration& configuration, const CStageNames& names,
                                         const CCheckOptions& options);

// The lines of the findings that are refused, or of the others.
std::vector<CString> LinesOf(const std::vector<CFinding>& findings, bool areRefused);

// names, with the variables of the nodes whose driver is not installed: a name that such a node gives is not
// unknown.
CStageNames GivenNames(const CConfiguration& configuration, const CStageNames& names);

}  // namespace vastra
