// CConcatLink joins two sources: it reads the first component, then the second. The sample has the values of
// the first, then those of the second, and the time of the first. The link cannot write.
#pragma once

#include "vastra/core/link.h"

namespace vastra {

class VASTRA_API CConcatConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CConcatConfig)
 public:
  int m_firstCount = 0;  // how many of the configurations after this one belong to the first component
};

class VASTRA_API CConcatLink : public CLink {
 public:
  // The link owns both components. Returns null if either is null.
  static CConcatLink* Create(CLink* first, CLink* second);
  ~CConcatLink() override;

  int Write(CLogSample& sample) override;  // always returns 0
  int Read(CLogSample& sample) override;
  int GetVarNames(CStringArray& names) override { return GiveVarNames(m_names, names); }
  void Close() override;
  // Deletes the configurations that the first component does not use; those that the second does not use stay
  // on configs. After a failure a component may still be open: the next Open, Close or the destructor closes
  // it.
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override;

 protected:
  CConcatLink(CLink* first, CLink* second);

 private:
  const CFault* OpenComponents(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode, int firstCount);
  const CFault* JoinNames();

  CLogSample m_secondSample;
  CStringArray m_names;  // of the first component, then of the second
  CLink* m_pSecondComponent;
};

}  // namespace vastra
