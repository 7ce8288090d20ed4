#include "vastra/stages/node_chain.h"

#include "vastra/core/namer_link.h"
#include "vastra/core/scaler_link.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/plc_link.h"

namespace vastra {

int AddNode(CChain& chain, const CPlcNodeConfig& node, int driver, int useDriver) {
  CPlcLink* plc = CDriverFactory::Instance()->NewDriver(driver);
  if (!plc) return 0;
  const CString name = CDriverFactory::Instance()->GetDriverName(driver);
  auto plcConfig = std::make_unique<CPlcLinkConfig>();
  plcConfig->m_config = node.m_driver;
  plcConfig->m_useDriver = useDriver;
  auto scalerConfig = std::make_unique<CScalerConfig>();
  scalerConfig->m_nodes = node.m_scaler.m_nodes;

  chain.Add(plc, name + " (" + node.m_nodeName + ")", std::move(plcConfig));
  chain.Add(CNamerLink::Create(chain.Head()), name, NameConfig(node.m_varNames));
  chain.Add(CScalerLink::Create(chain.Head()), name, std::move(scalerConfig));
  return 1;
}

}  // namespace vastra
