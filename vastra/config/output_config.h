// COutputConfig: the settings of one log output; CMultiOutputConfig: the list of them. Members of
// CLogSingleOutput and CLogMultiOutput.
#pragma once

#include "vastra/core/field_walk.h"
#include "vastra/logfiles/log_policy.h"
#include "vastra/platform/object.h"

namespace vastra {

// The value of m_nameVariable for logs that are named by the time of their first sample.
VASTRA_API extern const CString kSystemTime;

class VASTRA_API COutputConfig : public CObject {
  DECLARE_DYNAMIC(COutputConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  virtual void TextSerialize(CArchive& ar);  // the report, to an archive that stores

  CString m_name;                  // shown to the user
  CString m_enableText;            // the enable equations as the user typed them
  CStringArray m_enableEquations;  // the same, one statement per element
  CStringArray m_varNames;         // the variables of the log, in log order
  int m_saveRp = 0;                // 1: writes binary logs
  UINT m_maxLogs = 400;            // the maximum number of logs in the directory
  UINT m_maxSamples = 4000;        // the maximum number of samples in a log
  int m_saveCsv = 0;               // 1: writes text copies
  int m_dwordName = 0;             // 1: the variable after m_nameVariable is also part of a log's name
  int m_usePrefix = 0;             // 1: the name of a log begins with m_prefix
  CString m_prefix;
  CString m_nameVariable;     // kSystemTime, or a variable of the log
  CString m_directory;        // of the logs
  CLogRetention m_retention;  // beside m_maxLogs; only where a keeper keeps the logs
};

class VASTRA_API CMultiOutputConfig : public CObject {
  DECLARE_DYNAMIC(CMultiOutputConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  virtual void TextSerialize(CArchive& ar);
  void Clear() { m_outputs.RemoveAll(); }

  COwnedList<COutputConfig> m_outputs;
};

}  // namespace vastra
