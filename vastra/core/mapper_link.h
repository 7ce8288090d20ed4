// CMapperLink selects and orders variables by name: its outer side has the names of its configuration, its
// inner side those of its component. A name that the other side lacks has the value 0.0; this is not a
// failure. If a list has a name twice, the first one counts.
#pragma once

#include "vastra/core/name_config.h"

namespace vastra {

class VASTRA_API CMapperLink : public CComponentLink {
 public:
  // The link owns component. Returns null if component is null.
  static CMapperLink* Create(CLink* component);

  // In a sample shorter than the outer names the missing values are 0.0.
  int Write(CLogSample& sample) override;
  int Read(CLogSample& sample) override;
  int GetVarNames(CStringArray& names) override { return GiveVarNames(m_names, names); }

 protected:
  explicit CMapperLink(CLink* component);
  const CFault* Configure(CLinkConfig& config, UINT mode) override;

  CLogSample m_innerSample;     // one value for each name of the component
  CStringArray m_names;         // of the outer side
  CArray<int, int> m_readMap;   // for each outer name its index in the component's names, or -1
  CArray<int, int> m_writeMap;  // for each name of the component its index in the outer names, or -1
};

}  // namespace vastra
