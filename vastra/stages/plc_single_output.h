// CPlcSingleOutput: the writing to one PLC node. Its chain picks the node's variables by name, scales them
// and hands them to the driver.
#pragma once

#include "vastra/config/plc_write_config.h"
#include "vastra/stages/log_facade.h"

namespace vastra {

class CLink;

class VASTRA_API CPlcSingleOutput : public CLogFacade {
 public:
  CPlcSingleOutput() = default;
  ~CPlcSingleOutput() override { Close(); }

  // names are those of the samples to come. 0: a link failed and has told, or no driver of the node's type is
  // installed, which nobody tells.
  int Open(CStringArray& names);
  // Whether Open would take names, found out without contacting the PLC; 0 on an open output, too.
  int PreOpen(CStringArray& names);
  void Close();
  int Write(CLogSample& sample);

  CPlcSingleConfig* GetOptions() { return &m_options; }

 private:
  CLink* OpenChain(const CStringArray& names, int useDriver) const;

  CLink* m_pHeadLink = nullptr;  // outermost link, owned
  CPlcSingleConfig m_options;
};

}  // namespace vastra
