// CEquatorLink runs equations on every sample, in either direction. Its outer side has the output variables
// of its configuration: inputs, and variables that the equations assign. Assigned variables start at 0.0 and
// keep their values from sample to sample, and from Close to Open, while the link exists.
#pragma once

#include "vastra/core/link.h"
#include "vastra/equations/equator.h"

namespace vastra {

class VASTRA_API CEquatorConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CEquatorConfig)
 public:
  CStringList m_inputVariables;   // of incoming samples, in value order; empty: ask the component
  CStringList m_equations;        // one statement each, without its ";"
  CStringList m_outputVariables;  // of outgoing samples, in value order; an unknown name has the value 0.0
};

class VASTRA_API CEquatorLink : public CComponentLink {
 public:
  // The link owns component. Returns null if component is null.
  static CEquatorLink* Create(CLink* component);

  // The equations run before the component writes, so a failed write changes their variables too.
  int Write(CLogSample& sample) override;
  int Read(CLogSample& sample) override;
  int GetVarNames(CStringArray& names) override { return GiveVarNames(m_outputVariables, names); }

 protected:
  explicit CEquatorLink(CLink* component);
  const CFault* Configure(CLinkConfig& config, UINT mode) override;

 private:
  void RunEquations(char function, const CLogSample& in, CLogSample& out);

  CStringArray m_outputVariables;
  CArray<UINT, UINT> m_outputMap;  // for each output its index among the values of m_equator
  CStringArray m_undefinedTexts;   // for each equation the message for an undefined result
  CEquator m_equator;
  CLogSample m_innerSample;  // the component's side of a transfer
};

}  // namespace vastra
