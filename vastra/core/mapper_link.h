// CMapperLink selects and orders variables by name: its outer side speaks the names of its configuration, its
// inner side those of its component. A name without a partner reads as 0.0 and is no failure. Where a name
// stands twice in a list, its first place counts.
#pragma once

#include "vastra/core/name_config.h"

namespace vastra {

class VASTRA_API CMapperLink : public CComponentLink {
 public:
  // Takes over component. Null, and no link, if component is null.
  static CMapperLink* Create(CLink* component);

  // A sample shorter than the outer names reads as 0.0 behind its end.
  int Write(CLogSample& sample) override;
  int Read(CLogSample& sample) override;
  int GetVarNames(CStringArray& names) override { return GiveVarNames(m_names, names); }

 protected:
  explicit CMapperLink(CLink* component);
  const CFault* Configure(CLinkConfig& config, UINT mode) override;

  CLogSample m_innerSample;     // in the layout of the component
  CStringArray m_names;         // of the outer side
  CArray<int, int> m_readMap;   // for each outer name its place in the component's list, or -1
  CArray<int, int> m_writeMap;  // for each name of the component its place in the outer list, or -1
};

}  // namespace vastra
