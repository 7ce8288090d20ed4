// The test of the contract between a driver module and its host: a list of rules, tried one after the other
// in a process of its own, so that a driver that crashes, ends its process or hangs takes nothing else with
// it.
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

struct CFinding {
  const char* rule;
  EFinding finding;
  CString words;  // what was seen, or why the rule was not tried
};

struct CContractTest {
  CString path;                // of the module, absolute
  DriverConfig config;         // with which it is opened
  std::vector<float> values;   // what is written; none: nothing is
  std::chrono::seconds limit;  // the longest that a call may take
  // Told while the test goes on: the facts, before the first finding, and a finding for each rule. False ends
  // the test.
  std::function<bool(const CDriverFacts&)> tellFacts;
  std::function<bool(const CFinding&)> tellFinding;
};

struct CContractResult {
  CString noDriver;  // why the module is none; nothing has been told then
  CString end;  // how the driver ended its process or that it hung, and in which call; empty if it did not
  bool isKept = true;
};

CContractResult TestContract(const CContractTest& test);

}  // namespace vastra
