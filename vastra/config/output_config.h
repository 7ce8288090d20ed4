// COutputConfig: the settings of one log output, and CMultiOutputConfig, the list of them. Embedded in
// CLogSingleOutput and CLogMultiOutput.
#pragma once

#include "vastra/core/field_walk.h"
#include "vastra/platform/object.h"

namespace vastra {

// The value of m_nameVariable by which logs are named by the time of their first sample.
VASTRA_API extern const CString kSystemTime;

class VASTRA_API COutputConfig : public CObject {
  DECLARE_DYNAMIC(COutputConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  virtual void TextSerialize(CArchive& ar);  // the report, to an archive that stores

  CString m_name;                  // for the user
  CString m_enableText;            // the enable equations as the user typed them
  CStringArray m_enableEquations;  // the same, one per element
  CStringArray m_varNames;         // the variables of the log, in log order
  int m_saveRp = 0;                // 1: writes binary logs
  UINT m_maxLogs = 400;            // the most logs that stay in the directory
  UINT m_maxSamples = 4000;        // samples in a log
  int m_saveCsv = 0;               // 1: writes text copies
  int m_dwordName = 0;             // 1: the variable behind m_nameVariable joins in the name of a log
  int m_usePrefix = 0;             // 1: m_prefix stands in front of the name
  CString m_prefix;
  CString m_nameVariable;  // kSystemTime, or a variable of the log
  CString m_directory;     // where the logs go
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
