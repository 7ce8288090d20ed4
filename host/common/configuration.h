// CConfiguration: the settings that a host stores for a logger, one object for each stage. It has two forms
// on disk, the configuration file and JSON; configuration_file.h reads and writes both.
#pragma once

#include <map>

#include "vastra/config/input_config.h"
#include "vastra/config/output_config.h"
#include "vastra/config/plc_write_config.h"
#include "vastra/config/smart_config.h"
#include "vastra/config/stored_form.h"
#include "vastra/config/summary_config.h"
#include "vastra/config/trend_config.h"

namespace vastra {

// What people want to know about a variable beside its values.
struct CVariableNote {
  CString m_unit, m_comment;

  void Fields(CFieldWalk& walk) {
    walk.Field("unit", m_unit);
    walk.Field("comment", m_comment);
  }
  bool operator==(const CVariableNote&) const = default;
};

using CVariableNotes = std::map<CString, CVariableNote>;  // by the names of the variables

class CConfiguration {
 public:
  void Fields(CFieldWalk& walk);
  // Writes the text report of all blocks, in file order, to file. Throws the CFileException of file.
  void Report(CFile& file);

  UINT m_version = kVersionNewest;  // of the configuration file
  CInputConfig m_input;
  CMultiOutputConfig m_outputs;
  CMultiSummaryConfig m_summaries;
  CPlcMultiConfig m_plcWrite;
  CSmartConfig m_smart;
  CTrendConfig m_trend;
  CVariableNotes m_variables;  // only JSON has them
};

}  // namespace vastra
