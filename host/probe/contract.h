// The test of the contract between a driver module and its host: a list of rules, tried one after the other
// in a process of its own. A driver that crashes, ends its process or hangs does no harm to the host.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "vastra/plc/driver_config.h"

namespace vastra {

struct CDriverFacts {
  int id = 0;
  CString name;
  int version = 1;
};

enum class EFinding { kept, broken, notTried };

struct CRuleFinding {
  const char* rule;
  EFinding finding;
  CString words;  // what was seen, or why the rule was not tried
};

struct CContractTest {
  CString path;                // of the module, absolute
  DriverConfig config;         // with which the driver is opened
  std::vector<float> values;   // to write; empty: nothing is written
  std::chrono::seconds limit;  // the longest that a call may take
  // Called during the test: onFacts before the first finding, onFinding for each rule. False ends the test.
  std::function<bool(const CDriverFacts&)> onFacts;
  std::function<bool(const CRuleFinding&)> onFinding;
};

struct CContractResult {
  CString noDriver;  // why the module is not a driver; nothing was called then
  CString end;  // how the driver ended its process or that it hung, and in which call; empty if it did not
  bool isStopped = false;  // onFacts or onFinding ended the test
};

// Throws std::system_error if the process cannot be started.
CContractResult TestContract(const CContractTest& test);

}  // namespace vastra
