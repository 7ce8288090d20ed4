#include "vastra/config/smart_config.h"

#include "vastra/config/stored_form.h"
#include "vastra/core/text_serializer.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CSmartConfig, CObject)

void CSmartConfig::Fields(CFieldWalk& walk) {
  walk.Equations("equations", "equationText", m_equations);
  walk.Field("inputNames", m_inputNames);
  walk.Field("inputVars", m_inputVars);
  walk.Field("outputVars", m_outputVars);
  walk.Field("equationText", m_equationText);
}

void CSmartConfig::Serialize(CArchive& ar, UINT version) { SerializeFields(*this, ar, version); }

void CSmartConfig::Clear() { *this = CSmartConfig(); }

void CSmartConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  CTextReport report(ar);
  report.Add("[*** Smart ***]\r\n\r\n");
  report.Add("[Smart Input Variables]\r\n", m_inputVars, "\r\n");
  report.Add("[Smart Input Names]\r\n", m_inputNames, "\r\n");
  report.Add("[Smart Input Equations]\r\n", m_equations, "\r\n");
  report.Add("[Smart Output Variables]\r\n", m_outputVars, "\r\n");
}

}  // namespace vastra
