// CSummaryConfig: the settings of one summary; CMultiSummaryConfig: the list of them. Members of the summary
// stages.
#pragma once

#include "vastra/core/field_walk.h"
#include "vastra/logfiles/log_policy.h"
#include "vastra/platform/object.h"

namespace vastra {

class VASTRA_API CSummaryConfig : public CObject {
  DECLARE_DYNAMIC(CSummaryConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  void TextSerialize(CArchive& ar);  // the report, to an archive that stores

  CString m_enableText;             // the enable equations as the user typed them
  CStringArray m_enableEquations;   // the same, one statement per element
  CString m_name;                   // shown to the user
  CString m_summaryText;            // the summary equations as the user typed them
  CString m_directory;              // of the summary files
  UINT m_maxSummaries = 400;        // the maximum number of summary files in the directory
  UINT m_maxSamples = 4000;         // the maximum number of rows in a summary file
  int m_saveCsv = 0;                // 1: writes text copies
  int m_saveRp = 0;                 // 1: writes binary files
  CStringArray m_summaryEquations;  // the summary equations, one statement per element
  CStringArray m_varNames;          // the variables of the summary, in file order
  CLogRetention m_retention;        // beside m_maxSummaries; only where a keeper keeps the files
};

class VASTRA_API CMultiSummaryConfig : public CObject {
  DECLARE_DYNAMIC(CMultiSummaryConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  virtual void TextSerialize(CArchive& ar);
  void Clear() { m_summaries.RemoveAll(); }

  COwnedList<CSummaryConfig> m_summaries;
};

}  // namespace vastra
