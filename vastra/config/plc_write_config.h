// CPlcMultiConfig: the settings of the stage that writes to PLCs; CPlcSingleConfig: those of one node that it
// writes.
#pragma once

#include "vastra/config/plc_node_config.h"

namespace vastra {

// Its stored form and its report are exactly those of m_node.
class VASTRA_API CPlcSingleConfig : public CObject {
  DECLARE_DYNAMIC(CPlcSingleConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version) { m_node.Serialize(ar, version); }
  void Fields(CFieldWalk& walk) { m_node.WrittenFields(walk); }
  virtual void TextSerialize(CArchive& ar);

  CPlcNodeConfig m_node;
};

class VASTRA_API CPlcMultiConfig : public CObject {
  DECLARE_DYNAMIC(CPlcMultiConfig)
 public:
  using CObject::Serialize;
  // Storing and loading both set m_nodeNumber to 0; a caller that needs it sets it again afterwards.
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  virtual void TextSerialize(CArchive& ar);  // the report, to an archive that stores
  void Clear();                              // does not change m_nodeNumber

  COwnedList<CPlcSingleConfig> m_nodes;
  UINT m_nodeNumber = 0;     // of this computer on the network; in no stored form
  int m_disableWriting = 0;  // 1: the stage does not write
};

}  // namespace vastra
