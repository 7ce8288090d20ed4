// The parts of a configuration as rows, in the order in which the main window lists them.
#pragma once

#include <vector>

#include "host/common/configuration.h"

namespace vastra {

enum class EPart {
  input,
  node,
  smart,
  outputs,
  output,
  summaries,
  summary,
  plcWrite,
  writtenNode,
  trend,
  count
};

// From the best to the worst, except off.
enum class ECondition { off, good, waiting, away, failed };

// A word of a person for it, such as "away".
const char* WordOf(ECondition condition);

struct CPlantRow {
  // Of the configuration.
  EPart part = EPart::input;
  int index = 0;   // of a node, an output, ... in its list
  CString name;    // as the user calls it
  CString what;    // what it does
  CString folder;  // of an output or summary
  bool savesFiles = false;
  UINT mostLogs = 0, mostRows = 0;

  // Of the run, see CPlantState.
  ECondition condition = ECondition::off;
  CString state, lastValue, rows, files;
  bool isStale = false;  // the last value is older than it should be

  // Whether the row is under the one of its stage.
  bool IsChild() const;
  // Such as: output "All".
  CString Called() const;
  // Its place in the configuration, such as "outputs[1]".
  CString Key() const;
};

// inputVariables: their number; below 0: unknown.
std::vector<CPlantRow> RowsOf(const CConfiguration& configuration, int inputVariables);
// What the trending stage does.
CString TrendWords(const CTrendConfig& trend);
// Whether both have the same parts with the same names, whatever these do.
bool AreSameParts(const std::vector<CPlantRow>& a, const std::vector<CPlantRow>& b);

}  // namespace vastra
