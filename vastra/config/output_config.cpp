#include "vastra/config/output_config.h"

#include "vastra/config/stored_form.h"
#include "vastra/core/text_serializer.h"
#include "vastra/logfiles/log_name.h"

namespace vastra {

const CString kSystemTime = kNamedByTime;

IMPLEMENT_DYNCREATE(COutputConfig, CObject)
IMPLEMENT_DYNCREATE(CMultiOutputConfig, CObject)

void COutputConfig::Fields(CFieldWalk& walk) {
  walk.Field("varNames", m_varNames);
  walk.Equations("enableEquations", "enableText", m_enableEquations);
  walk.Field("name", m_name);
  walk.Flag("saveRp", m_saveRp);
  walk.Flag("saveCsv", m_saveCsv);
  walk.Field("maxLogs", m_maxLogs);
  walk.Field("maxSamples", m_maxSamples);
  RetentionFields(walk, m_retention);
  walk.Path("directory", m_directory);
  walk.Field("enableText", m_enableText);
  if (walk.IsLoading()) {  // the values for a form without the naming fields
    m_nameVariable = kSystemTime;
    m_dwordName = m_usePrefix = 0;
    m_prefix.Empty();
  }
  if (!walk.HasSince(kVersionNaming)) return;
  walk.Field("nameVariable", m_nameVariable);
  walk.Flag("dwordName", m_dwordName);
  walk.Field("prefix", m_prefix);
  walk.Flag("usePrefix", m_usePrefix);
}

void COutputConfig::Serialize(CArchive& ar, UINT version) { SerializeFields(*this, ar, version); }

void COutputConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  CTextReport report(ar);
  report.Add("[*** Output ***]\r\n\r\n");
  report.Add("[Name]\r\n", m_name, "\r\n");
  report.Add("[Write RP Files (Logs)]\r\n", m_saveRp, "\r\n");
  report.Add("[Write Text Files]\r\n", m_saveCsv, "\r\n");
  if (!m_saveRp && !m_saveCsv) return;
  report.Add("[Directory to write logs to]\r\n", m_directory, "\r\n\r\n");
  report.Add("[Max number of logs to be written on directory]\r\n", report.Decimal(m_maxLogs), "\r\n\r\n");
  report.Add("[Max number of samples to be contained in a log]\r\n", report.Decimal(m_maxSamples),
             "\r\n\r\n");
  report.Add("[Log Variables]\r\n", m_varNames, "\r\n");
  report.Add("[Enable Equations]\r\n", m_enableEquations, "\r\n");
}

void CMultiOutputConfig::Fields(CFieldWalk& walk) { walk.Objects("outputs", m_outputs); }

void CMultiOutputConfig::Serialize(CArchive& ar, UINT version) { SerializeFields(*this, ar, version); }

void CMultiOutputConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  ar.WriteString("[*** Multiple Outputs ***]\r\n\r\n");
  for (COutputConfig* output : m_outputs) output->TextSerialize(ar);
}

}  // namespace vastra
