// CScalerLink turns raw values of a PLC into engineering values: value x factor, held between two limits if
// the rule says so. Reading and writing apply the same factor; there is no inverse. A variable without a rule
// passes unchanged.
#pragma once

#include "vastra/core/scaler_config.h"

namespace vastra {

class VASTRA_API CScalerLink : public CComponentLink {
 public:
  // Takes over component. Null, and no link, if component is null.
  static CScalerLink* Create(CLink* component);

  int Write(CLogSample& sample) override;  // sample holds the scaled values afterwards, also on 0
  int Read(CLogSample& sample) override;
  // The component's names, whatever the state of this link; sends End also when the component fails.
  int GetVarNames(CStringArray& names) override;

 protected:
  explicit CScalerLink(CLink* component);
  const CFault* Configure(CLinkConfig& config, UINT mode) override;

 private:
  void Scale(CArray<float, float>& values) const;

  CArray<CScalerConfigNode, CScalerConfigNode> m_nodes;
  CArray<int, int> m_indices;  // for each rule the place of its variable, or -1
};

}  // namespace vastra
