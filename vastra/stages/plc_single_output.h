// CPlcSingleOutput: writes to one PLC node. Its chain selects the node's variables by name, scales them and
// passes them to the driver.
#pragma once

#include <memory>

#include "vastra/config/plc_write_config.h"
#include "vastra/stages/log_facade.h"

namespace vastra {

class CLink;
class CNodeGroup;

class VASTRA_API CPlcSingleOutput : public CLogFacade {
 public:
  CPlcSingleOutput() = default;
  ~CPlcSingleOutput() override { Close(); }

  // names are those of the samples to come. 0: a link failed and has reported it, or no driver of the node's
  // type is installed, for which there is no message.
  int Open(CStringArray& names);
  // Whether Open would accept names, without contacting the PLC; 0 also on an open output.
  int PreOpen(CStringArray& names);
  void Close();
  int Write(CLogSample& sample);

  // The node belongs to group from the next Open on, which then succeeds also if only the driver refuses;
  // null, the default: to none.
  void SetGroup(const std::shared_ptr<CNodeGroup>& group) { m_group = group; }

  CPlcSingleConfig* GetOptions() { return &m_options; }

 private:
  CLink* OpenChain(const CStringArray& names, int useDriver) const;
  CLink* OpenGuarded(const CStringArray& names) const;

  CLink* m_pHeadLink = nullptr;  // outermost link, owned
  CPlcSingleConfig m_options;
  std::shared_ptr<CNodeGroup> m_group;
};

}  // namespace vastra
