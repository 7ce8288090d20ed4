#include "vastra/stages/plc_single_output.h"

#include "vastra/core/mapper_link.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/stages/node_chain.h"

namespace vastra {

int CPlcSingleOutput::Open(CStringArray& names) {
  if (m_open) Close();
  if (m_group && !PreOpen(names)) return 0;  // wrong settings are no absence
  m_pHeadLink = m_group ? OpenGuarded(names) : OpenChain(names, 1);
  m_open = m_pHeadLink != nullptr;
  return m_open;
}

int CPlcSingleOutput::PreOpen(CStringArray& names) {
  return !m_open && std::unique_ptr<CLink>(OpenChain(names, 0));
}

CLink* CPlcSingleOutput::OpenChain(const CStringArray& names, int useDriver) const {
  CDriverFactory& drivers = *CDriverFactory::Instance();
  const int driver = drivers.GetDriverIndex(m_options.m_node.m_driver.plcType);
  CChain chain;
  if (driver < 0 || !AddNode(chain, m_options.m_node, driver, useDriver)) return nullptr;
  chain.Add(CMapperLink::Create(chain.Pass()), drivers.GetDriverName(driver), NameConfig(names));
  return chain.Open(CLink::modeWrite);
}

CLink* CPlcSingleOutput::OpenGuarded(const CStringArray& names) const {
  const int driver = CDriverFactory::Instance()->GetDriverIndex(m_options.m_node.m_driver.plcType);
  CChain chain;
  return AddGuardedWrite(chain, m_options.m_node, driver, names, m_group) ? chain.Open(CLink::modeWrite)
                                                                          : nullptr;
}

void CPlcSingleOutput::Close() {
  delete m_pHeadLink;
  m_pHeadLink = nullptr;
  m_open = 0;
}

int CPlcSingleOutput::Write(CLogSample& sample) { return m_open ? m_pHeadLink->Write(sample) : 0; }

}  // namespace vastra
