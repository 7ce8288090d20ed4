// CPlcMultiConfig: the settings of the stage that writes to PLCs, with CPlcSingleConfig for each node that it
// writes.
#pragma once

#include "vastra/config/plc_node_config.h"

namespace vastra {

// Its stored form and its report are those of m_node, with nothing around them.
class VASTRA_API CPlcSingleConfig : public CObject {
  DECLARE_DYNAMIC(CPlcSingleConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version) { m_node.Serialize(ar, version); }
  void Fields(CFieldWalk& walk) { m_node.Fields(walk); }
  virtual void TextSerialize(CArchive& ar);

  CPlcNodeConfig m_node;
};

class VASTRA_API CPlcMultiConfig : public CObject {
  DECLARE_DYNAMIC(CPlcMultiConfig)
 public:
  using CObject::Serialize;
  // Sets m_nodeNumber to 0 first, storing or loading; whoever needs it sets it again afterwards.
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  virtual void TextSerialize(CArchive& ar);  // the report, to an archive that stores
  void Clear();                              // m_nodeNumber stays

  COwnedList<CPlcSingleConfig> m_nodes;
  UINT m_nodeNumber = 0;     // of this computer on the net; stored nowhere
  int m_disableWriting = 0;  // 1: the stage writes nothing
};

}  // namespace vastra
