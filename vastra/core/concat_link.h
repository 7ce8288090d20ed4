// CConcatLink makes one source out of two: it reads the first component, then the second, and gives the
// values of the first followed by those of the second, with the time of the first. It reads only.
#pragma once

#include "vastra/core/link.h"

namespace vastra {

class VASTRA_API CConcatConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CConcatConfig)
 public:
  int m_firstCount = 0;  // how many of the configurations behind this one belong to the first component
};

class VASTRA_API CConcatLink : public CLink {
 public:
  // Takes over both. Null, and no link, if either is null.
  static CConcatLink* Create(CLink* first, CLink* second);
  ~CConcatLink() override;

  int Write(CLogSample& sample) override;  // always 0
  int Read(CLogSample& sample) override;
  int GetVarNames(CStringArray& names) override { return GiveVarNames(m_names, names); }
  void Close() override;
  // What the first component leaves of its configurations is deleted; what the second leaves stays on
  // configs. After a failure a component may still be open; it closes with the next Open, Close or the
  // destruction of this link.
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override;

 protected:
  CConcatLink(CLink* first, CLink* second);

 private:
  const CFault* OpenComponents(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode, int firstCount);
  const CFault* JoinNames();

  CLogSample m_secondSample;
  CStringArray m_names;  // those of the first component, then those of the second
  CLink* m_pSecondComponent;
};

}  // namespace vastra
