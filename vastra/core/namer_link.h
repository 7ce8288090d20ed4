// CNamerLink adds names to a component that has none, such as a PLC, and checks the length of samples: one
// that does not have exactly one value for each name is refused. It does not change samples.
#pragma once

#include "vastra/core/name_config.h"

namespace vastra {

class VASTRA_API CNamerLink : public CComponentLink {
 public:
  // The link owns component. Returns null if component is null.
  static CNamerLink* Create(CLink* component);

  int Write(CLogSample& sample) override;
  int Read(CLogSample& sample) override;
  int GetVarNames(CStringArray& names) override { return GiveVarNames(m_names, names); }

 protected:
  explicit CNamerLink(CLink* component);
  const CFault* Configure(CLinkConfig& config, UINT mode) override;

  CStringArray m_names;
};

}  // namespace vastra
