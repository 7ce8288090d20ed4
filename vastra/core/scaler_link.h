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
  // A rule whose variable the component has, as it runs for every sample.
  struct CRule {
    unsigned m_index;  // place of the variable
    int m_clamping;
    float m_scale;
    float m_lowLimit, m_highLimit;
  };
  static float Scaled(float value, const CRule& rule);
  void Scale(CArray<float, float>& values) const;

  CArray<CRule, CRule> m_nodes;  // in the order of the configuration
};

}  // namespace vastra
