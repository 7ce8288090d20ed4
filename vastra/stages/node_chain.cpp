#include "vastra/stages/node_chain.h"

#include "vastra/core/mapper_link.h"
#include "vastra/core/namer_link.h"
#include "vastra/core/scaler_link.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/plc_link.h"

namespace vastra {
namespace {

std::unique_ptr<CPlcLinkConfig> PlcConfig(const CPlcNodeConfig& node, int useDriver) {
  auto config = std::make_unique<CPlcLinkConfig>();
  config->m_config = node.m_driver;
  config->m_useDriver = useDriver;
  return config;
}

std::unique_ptr<CScalerConfig> ScalerConfig(const CPlcNodeConfig& node) {
  auto config = std::make_unique<CScalerConfig>();
  config->m_nodes = node.m_scaler.m_nodes;
  return config;
}

// Puts a CNodeLink around the links of inner. Their configurations are made anew for each of its attempts to
// open them, with a mapper from names unless it is null.
void Guard(CChain& chain, CChain& inner, const CPlcNodeConfig& node, int driver,
           const std::shared_ptr<CNodeGroup>& group, const CStringArray* names) {
  auto config = std::make_unique<CNodeConfig>();
  config->m_group = group;
  config->m_varNames = node.m_varNames;
  config->m_absent = node.m_absent;
  config->m_aliveVar = node.m_aliveVar;
  config->m_line = CDriverFactory::Instance()->LineOf(driver, node.m_driver);
  const auto settings = std::make_shared<const CPlcNodeConfig>(node);
  const auto mapped = names ? std::make_shared<const CStringArray>(*names) : nullptr;
  const int useDriver = group != nullptr;
  config->m_inner = [settings, mapped, useDriver](CLinkConfigList& configs, UINT& notFinite) {
    auto plc = PlcConfig(*settings, useDriver);
    if (mapped) plc->m_pNotFinite = &notFinite;
    if (mapped) configs.AddTail(NameConfig(*mapped).release());
    configs.AddTail(ScalerConfig(*settings).release());
    configs.AddTail(NameConfig(settings->m_varNames).release());
    configs.AddTail(plc.release());
  };
  const CString name =
      node.m_nodeName.IsEmpty() ? CDriverFactory::Instance()->GetDriverName(driver) : node.m_nodeName;
  chain.Add(CNodeLink::Create(inner.Pass()), name, std::move(config));
}

}  // namespace

int AddNode(CChain& chain, const CPlcNodeConfig& node, int driver, int useDriver) {
  CPlcLink* plc = CDriverFactory::Instance()->NewDriver(driver);
  if (!plc) return 0;
  const CString name = CDriverFactory::Instance()->GetDriverName(driver);
  chain.Add(plc, name + " (" + node.m_nodeName + ")", PlcConfig(node, useDriver));
  chain.Add(CNamerLink::Create(chain.Pass()), name, NameConfig(node.m_varNames));
  chain.Add(CScalerLink::Create(chain.Pass()), name, ScalerConfig(node));
  return 1;
}

int AddGuardedNode(CChain& chain, const CPlcNodeConfig& node, int driver,
                   const std::shared_ptr<CNodeGroup>& group) {
  CChain inner;
  if (!AddNode(inner, node, driver, 1)) return 0;
  Guard(chain, inner, node, driver, group, nullptr);
  return 1;
}

int AddGuardedWrite(CChain& chain, const CPlcNodeConfig& node, int driver, const CStringArray& names,
                    const std::shared_ptr<CNodeGroup>& group) {
  CChain inner;
  if (!AddNode(inner, node, driver, 1)) return 0;
  inner.Add(CMapperLink::Create(inner.Pass()), CDriverFactory::Instance()->GetDriverName(driver),
            NameConfig(names));
  Guard(chain, inner, node, driver, group, &names);
  return 1;
}

}  // namespace vastra
