// The checks of PLC nodes.
#include <functional>
#include <string_view>
#include <unordered_map>

#include "host/common/check_list.h"
#include "host/common/key_path.h"
#include "host/common/name_set.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {
namespace {

// Calls action with the key of each node, and whether the node is written.
void ForEachNode(const CConfiguration& configuration,
                 const std::function<void(const CString&, const CPlcNodeConfig&, bool)>& action) {
  int index = 0;
  for (const CPlcNodeConfig* node : configuration.m_input.m_plcNodes)
    action(KeyPath("input.plcNodes", index++), *node, false);
  index = 0;
  for (const CPlcSingleConfig* node : configuration.m_plcWrite.m_nodes)
    action(KeyPath("plcWrite.nodes", index++), node->m_node, true);
}

// The same with the nodes that a run uses, and the place of their driver, below 0 if it is not installed.
void ForEachUsedNode(const CCheckContext& context,
                     const std::function<void(const CString&, const CPlcNodeConfig&, bool, int)>& action) {
  const bool writes =
      !context.configuration.m_plcWrite.m_disableWriting && (context.isLive || context.options.replayWrites);
  ForEachNode(context.configuration, [&](const CString& key, const CPlcNodeConfig& node, bool isWritten) {
    if (isWritten ? writes : context.isLive)
      action(key, node, isWritten, CDriverFactory::Instance()->GetDriverIndex(node.m_driver.plcType));
  });
}

}  // namespace

void CheckDrivers(const CCheckContext& context, CFindings& findings) {
  const char* const left = context.options.keepsLogs ? "" : ": the node is left out";
  ForEachUsedNode(context, [&](const CString& key, const CPlcNodeConfig& node, bool isWritten, int driver) {
    if (driver < 0)
      findings.Refuse(key + ".driver.plcType", "no driver " + CString(std::to_string(node.m_driver.plcType)) +
                                                   " is installed" + (isWritten ? "" : left));
  });
}

void CheckDriverSettings(const CCheckContext& context, CFindings& findings) {
  ForEachUsedNode(context, [&](const CString& key, const CPlcNodeConfig& node, bool, int driver) {
    if (driver < 0) return;
    const CString fault = CDriverFactory::Instance()->CheckConfig(driver, node.m_driver);
    if (!fault.IsEmpty()) findings.Refuse(key + ".driver", fault);
  });
}

// The values of a node get its names in order, so each read of a node with another number of them fails.
void CheckCounts(const CCheckContext& context, CFindings& findings) {
  ForEachUsedNode(context, [&](const CString& key, const CPlcNodeConfig& node, bool, int) {
    const UINT count = node.m_driver.variableCount, names = static_cast<UINT>(node.m_varNames.GetSize());
    if (count != names)
      findings.Warn(key + ".driver.variableCount",
                    CString(std::to_string(count)) + " is not the number of variables, " +
                        CString(std::to_string(names)) + ": no read and no write succeeds");
  });
}

// The scaler ignores a rule for a variable that the node does not have, without a message.
void CheckScalers(const CCheckContext& context, CFindings& findings) {
  ForEachNode(context.configuration, [&](const CString& key, const CPlcNodeConfig& node, bool isWritten) {
    if (!isWritten && !context.isLive) return;
    int index = 0;
    const CNameSet names(node.m_varNames);
    for (const CScalerConfigNode& rule : node.m_scaler.m_nodes) {
      const CString place = KeyPath(key + ".scaler", index++);
      if (!names.Has(rule.m_varName))
        findings.Warn(place + ".varName", "the node has no variable " + Quoted(rule.m_varName));
      else if (rule.m_scale == 0)
        findings.Warn(place + ".scale", "0 makes each value of " + Quoted(rule.m_varName) + " 0");
    }
  });
}

void CheckAbsence(const CCheckContext& context, CFindings& findings) {
  if (!context.isLive) return;
  int failing = 0;
  for (const CPlcNodeConfig* node : context.configuration.m_input.m_plcNodes)
    failing += node->m_absent == EAbsent::fail;
  if (failing > 1)
    findings.Note("input.plcNodes",
                  CString(std::to_string(failing)) +
                      " nodes have \"absent\": \"fail\": one of them that does not answer fails the scan of "
                      "all nodes; with \"nan\" or \"hold\" the others go on");
}

void CheckAliveVars(const CCheckContext& context, CFindings& findings) {
  std::unordered_map<std::string_view, CString> users;  // by name
  const auto& nodes = context.configuration.m_input.m_plcNodes;
  int index = 0;
  for (const CPlcNodeConfig* node : nodes) {
    const CString key = KeyPath("input.plcNodes", index++);
    for (const CString& name : node->m_varNames) users.emplace(name.View(), key + ".varNames");
  }
  index = 0;
  for (const CPlcNodeConfig* node : nodes) {
    const CString key = KeyPath("input.plcNodes", index++) + ".aliveVar";
    if (node->m_aliveVar.IsEmpty()) continue;
    const auto [user, isNew] = users.emplace(node->m_aliveVar.View(), key);
    if (!isNew) findings.Refuse(key, Quoted(node->m_aliveVar) + " is in " + user->second + " already");
  }
}

}  // namespace vastra
