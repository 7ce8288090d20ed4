#include "vastra/config/summary_config.h"

#include "vastra/config/stored_form.h"
#include "vastra/core/text_serializer.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CSummaryConfig, CObject)
IMPLEMENT_DYNCREATE(CMultiSummaryConfig, CObject)

void CSummaryConfig::Fields(CFieldWalk& walk) {
  walk.Equations("enableEquations", "enableText", m_enableEquations);
  walk.Equations("summaryEquations", "summaryText", m_summaryEquations);
  walk.Field("varNames", m_varNames);
  walk.Field("name", m_name);
  walk.Flag("saveRp", m_saveRp);
  walk.Flag("saveCsv", m_saveCsv);
  walk.Field("maxSamples", m_maxSamples);
  walk.Field("maxSummaries", m_maxSummaries);
  RetentionFields(walk, m_retention);
  walk.Path("directory", m_directory);
  walk.Field("summaryText", m_summaryText);
  walk.Field("enableText", m_enableText);
}

void CSummaryConfig::Serialize(CArchive& ar, UINT version) { SerializeFields(*this, ar, version); }

void CSummaryConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  CTextReport report(ar);
  report.Add("[*** Summary ***]\r\n\r\n");
  report.Add("[Name]\r\n", m_name, "\r\n");
  report.Add("[Write RP Files (Logs)]\r\n", m_saveRp, "\r\n");
  report.Add("[Write Text Files]\r\n", m_saveCsv, "\r\n");
  if (!m_saveRp && !m_saveCsv) return;
  report.Add("[Directory to write summaries to]\r\n", m_directory, "\r\n\r\n");
  report.Add("[Max number of summaries to be written on directory]\r\n", report.Decimal(m_maxSummaries),
             "\r\n\r\n");
  report.Add("[Max number of samples to be contained in a summary]\r\n", report.Decimal(m_maxSamples),
             "\r\n\r\n");
  report.Add("[Summary Variables]\r\n", m_varNames, "\r\n");
  report.Add("[Summary Equations]\r\n", m_summaryEquations, "\r\n");
  report.Add("[Enable Equations]\r\n", m_enableEquations, "\r\n");
}

void CMultiSummaryConfig::Fields(CFieldWalk& walk) { walk.Objects("summaries", m_summaries); }

void CMultiSummaryConfig::Serialize(CArchive& ar, UINT version) { SerializeFields(*this, ar, version); }

void CMultiSummaryConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  ar.WriteString("[*** Multiple Summaries ***]\r\n\r\n");
  for (CSummaryConfig* summary : m_summaries) summary->TextSerialize(ar);
}

}  // namespace vastra
