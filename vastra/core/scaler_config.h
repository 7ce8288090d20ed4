// The configuration of CScalerLink: a rule for each scaled variable. It is part of the configuration of a PLC
// node.
#pragma once

#include "vastra/core/field_walk.h"
#include "vastra/core/link.h"

namespace vastra {

// The rule for one variable.
class VASTRA_API CScalerConfigNode : public CObject {
 public:
  void Fields(CFieldWalk& walk);

  float m_scale = 1.0f;
  CString m_varName;
  int m_clamping = 0;  // non-zero: the limits apply, to the scaled value
  float m_lowLimit = 0.0f;
  float m_highLimit = 0.0f;
};

// The rules in the order in which they are applied. A variable can have several rules.
class VASTRA_API CScalerConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CScalerConfig)
 public:
  // The stored form: the rules, as "scaler". It is the same in every version.
  void Fields(CFieldWalk& walk);
  void Serialize(CArchive& ar) override;
  void TextSerialize(CArchive& ar);  // the report, to an archive that stores

  CArray<CScalerConfigNode, CScalerConfigNode> m_nodes;
};

}  // namespace vastra
