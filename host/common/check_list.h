// The single checks of a configuration. checks.cpp has the table of them.
#pragma once

#include "host/common/checks.h"
#include "host/common/log_targets.h"

namespace vastra {

class CFindings {
 public:
  explicit CFindings(bool refuses) : m_refuses(refuses) {}
  void Refuse(const CString& key, const CString& text) { m_all.push_back({m_refuses, key, text}); }
  void Warn(const CString& key, const CString& text) { m_all.push_back({false, key, text}); }
  // For what users often intend: a host that asks before a start does not ask about it.
  void Note(const CString& key, const CString& text) { m_all.push_back({false, key, text, false, true}); }
  std::vector<CFinding>& All() { return m_all; }

 private:
  const bool m_refuses;
  std::vector<CFinding> m_all;
};

struct CCheckContext {
  const CConfiguration& configuration;
  const CStageNames& names;
  const CCheckOptions& options;
  const std::vector<CLogTarget> targets = FindLogTargets(configuration);
  const bool isLive = !configuration.m_input.m_simulating;
};

using CCheckFunction = void(const CCheckContext&, CFindings&);

// log_checks.cpp:
CCheckFunction CheckClock, CheckLimits, CheckSaving, CheckPrefixes, CheckLogNames, CheckReplayed,
    CheckFolderNames, CheckFolders, CheckSharedFolders;
// node_checks.cpp:
CCheckFunction CheckDrivers, CheckDriverSettings, CheckCounts, CheckScalers, CheckAbsence, CheckAliveVars;
// name_checks.cpp:
CCheckFunction CheckNames, CheckNotes, CheckFlags, CheckBaseVars, CheckUnusedEquations;
// name_repeats.cpp:
CCheckFunction CheckRepeats, CheckSpelling;
// sum_check.cpp:
CCheckFunction CheckSums;

}  // namespace vastra
