// CScalerLink turns raw values of a PLC into engineering values: value x factor, limited to a range if the
// rule has limits. Reading and writing apply the same factor; there is no inverse. A variable without a rule
// does not change.
#pragma once

#include "vastra/core/scaler_config.h"

namespace vastra {

class VASTRA_API CScalerLink : public CComponentLink {
 public:
  // The link owns component. Returns null if component is null.
  static CScalerLink* Create(CLink* component);

  int Write(CLogSample& sample) override;  // scales sample in place, also if it returns 0
  int Read(CLogSample& sample) override;
  // The component's names, even if this link is closed. Sends End even if the component fails.
  int GetVarNames(CStringArray& names) override;

 protected:
  explicit CScalerLink(CLink* component);
  const CFault* Configure(CLinkConfig& config, UINT mode) override;

 private:
  // A rule whose variable the component has; applied to every sample.
  struct CRule {
    unsigned index;  // of the variable
    int clamping;
    float scale;
    float lowLimit, highLimit;
  };
  static float Scaled(float value, const CRule& rule);
  void Scale(CArray<float, float>& values) const;

  CArray<CRule, CRule> m_nodes;  // in the order of the configuration
};

}  // namespace vastra
