#include "vastra/core/scaler_config.h"

#include "vastra/core/text_serializer.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CScalerConfig, CLinkConfig)

void CScalerConfigNode::Fields(CFieldWalk& walk) {
  walk.Field("scale", m_scale);
  walk.Field("varName", m_varName);
  walk.Flag("clamping", m_clamping);
  walk.Field("lowLimit", m_lowLimit);
  walk.Field("highLimit", m_highLimit);
}

void CScalerConfig::Fields(CFieldWalk& walk) { walk.Objects("scaler", m_nodes); }

void CScalerConfig::Serialize(CArchive& ar) {
  CArchiveWalk walk(ar);
  Fields(walk);
}

void CScalerConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  CTextReport report(ar);
  report.Add("*Scaler\r\n", "\r\n");
  for (CScalerConfigNode& node : m_nodes) {
    report.Add("Variable Name: ", node.m_varName, "\r\n");
    report.Add("Scale: ", report.Fixed(node.m_scale), "\r\n");
    report.Add("Clamping: ", node.m_clamping);
    report.Add("Low Limit: ", report.Fixed(node.m_lowLimit), "\r\n");
    report.Add("High Limit: ", report.Fixed(node.m_highLimit), "\r\n\r\n");
  }
}

}  // namespace vastra
