#include "vastra/config/trend_config.h"

#include "vastra/config/stored_form.h"
#include "vastra/core/text_serializer.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CTrendConfig, CObject)

void CTrendConfig::Fields(CFieldWalk& walk) {
  walk.Field("extraVars", m_extraVars);
  walk.Equations("equations", "equationText", m_equations);
  walk.Field("baseVars", m_baseVars);
  walk.Flag("calculateExtra", m_calculateExtra);
  walk.Field("equationText", m_equationText);
}

void CTrendConfig::Serialize(CArchive& ar, UINT version) { SerializeFields(*this, ar, version); }

void CTrendConfig::Clear() { *this = CTrendConfig(); }

void CTrendConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  CTextReport report(ar);
  report.Add("[*** Trending ***]\r\n\r\n");
  report.Add("[Calculate extra trend/grid variables]\r\n", m_calculateExtra, "\r\n");
  if (!m_calculateExtra) return;
  report.Add("[Extra Variables]\r\n", m_extraVars, "\r\n");
  report.Add("[Extra Variable Equations]\r\n", m_equations, "\r\n\r\n");
}

}  // namespace vastra
