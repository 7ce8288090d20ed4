// The plan of a new logger, which the assistant fills page by page: what is wrong with it, the configuration
// that it makes with its equations, and the words about what was written.
#pragma once

#include <set>
#include <vector>

#include "host/common/configuration.h"
#include "host/desktop/variable_list_rules.h"

namespace vastra {

constexpr int kSimulatorType = 9001, kModbusType = 9002;  // of the drivers that the assistant has words for

enum class ELogEnd { hour, day, batch };

// A function of a summary: for a variable V it computes V_Mean, and so on.
struct CSummaryFunction {
  const char* name;
  // With RESULT, VALUE, ALIVE, STEP and COUNT in place of the names.
  const char* equation;
};
inline constexpr CSummaryFunction kSummaryFunctions[] = {
    {"Mean",
     "RESULT = ALIVE == 0 ? (STEP == 1 ? VALUE : RESULT) : (COUNT == 1 ? VALUE : RESULT + (VALUE - RESULT) / "
     "COUNT);"},
    {"Min",
     "RESULT = ALIVE == 0 ? (STEP == 1 ? VALUE : RESULT) : ((COUNT == 1) || (VALUE < RESULT) ? VALUE : "
     "RESULT);"},
    {"Max",
     "RESULT = ALIVE == 0 ? (STEP == 1 ? VALUE : RESULT) : ((COUNT == 1) || (VALUE > RESULT) ? VALUE : "
     "RESULT);"},
    {"Last", "RESULT = ALIVE == 0 ? (STEP == 1 ? VALUE : RESULT) : VALUE;"}};

struct CLoggerPlan {
  // The device.
  CString driverName;
  DriverConfig driver;  // with the ID; without the number of values
  CString nodeName;
  std::vector<CVariableRow> rows;
  // The logs.
  int scanPeriod = 1000;  // milliseconds
  ELogEnd logEnd = ELogEnd::day;
  CString batchVariable;
  CString logFolder = "logs";  // relative ones are in the folder of the configuration
  int keepDays = 365;          // 0: no limit
  bool saveRp = true, saveCsv = true;
  // The summary.
  bool summarises = true;
  int summarySeconds = 60;
  std::set<int> functions = {0, 1, 2};  // of kSummaryFunctions
  std::set<CString> leftOut;            // variables without a summary
  CString summaryFolder = "summary";
  CString path;  // of the configuration

  CRegisterUse Registers() const { return {driver.plcType == kModbusType, driver.registerAddress}; }
};

// What is wrong on a page, as a sentence; empty: nothing.
CString DeviceFault(const CLoggerPlan& plan);
CString LogsFault(const CLoggerPlan& plan);
CString SummaryFault(const CLoggerPlan& plan);
CString PathFault(const CLoggerPlan& plan);

// The rows that a device begins with, values of them if it has no list.
std::vector<CVariableRow> FirstRows(const CLoggerPlan& plan, int values);
// The settings with which the device of the plan is opened.
DriverConfig DriverOf(const CLoggerPlan& plan);

// The configuration of a plan without faults.
CConfiguration ConfigurationOf(const CLoggerPlan& plan);

// Makes the folders and writes the configuration as JSON. Returns an empty string, or what has failed; a file
// that is there is not replaced.
CString WriteLogger(const CLoggerPlan& plan);
// What a plan makes, in lines: the files and folders, what is logged, and the equations.
CString DescribeLogger(const CLoggerPlan& plan);

}  // namespace vastra
