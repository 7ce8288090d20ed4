#include "vastra/config/enable_config.h"

#include "vastra/core/text_serializer.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CEnableConfig, CObject)

void CEnableConfig::Serialize(CArchive& ar) { ar.Serialize(m_equations); }

void CEnableConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  CTextReport report(ar);
  report.Add("[*** Enable ***]\r\n\r\n", "[Enable Equations]\r\n", m_equations, "\r\n");
}

}  // namespace vastra
