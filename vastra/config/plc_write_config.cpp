#include "vastra/config/plc_write_config.h"

#include "vastra/config/stored_form.h"
#include "vastra/core/text_serializer.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CPlcSingleConfig, CObject)
IMPLEMENT_DYNCREATE(CPlcMultiConfig, CObject)

void CPlcSingleConfig::TextSerialize(CArchive& ar) { m_node.TextSerialize(ar); }

void CPlcMultiConfig::Fields(CFieldWalk& walk) {
  if (walk.IsStream()) m_nodeNumber = 0;
  walk.Objects("nodes", m_nodes);
  if (!walk.IsStream()) walk.Flag("disableWriting", m_disableWriting);
}

void CPlcMultiConfig::Serialize(CArchive& ar, UINT version) { SerializeFields(*this, ar, version); }

void CPlcMultiConfig::Clear() {
  m_nodes.RemoveAll();
  m_disableWriting = 0;
}

void CPlcMultiConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  ar.WriteString("[*** Multiple Outputs to Plc***]\r\n\r\n");
  for (CPlcSingleConfig* node : m_nodes) node->TextSerialize(ar);
}

}  // namespace vastra
