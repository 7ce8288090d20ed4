#include "host/common/warnings.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "host/common/key_path.h"
#include "host/common/log_checks.h"
#include "host/common/log_targets.h"
#include "vastra/equations/separator.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {
namespace {

// The canonical path of directory.
std::filesystem::path Place(const CString& directory) {
  std::error_code failed;
  const std::filesystem::path given(directory.IsEmpty() ? "." : directory.Std());
  const std::filesystem::path place = std::filesystem::weakly_canonical(given, failed);
  return failed ? given : place;
}

void AddPlaces(const CConfiguration& configuration, bool keepsLogs, std::vector<CString>& warnings) {
  std::map<std::filesystem::path, CString> users;
  for (const CLogTarget& target : FindLogTargets(configuration)) {
    if (target.maxLogs == 0)
      warnings.push_back(target.key + "." + target.maxLogsName +
                         ": 0 removes each log as soon as it is written");
    if (target.maxSamples == 0)
      warnings.push_back(target.key + ".maxSamples: 0 makes each sample a log of its own");
    const auto [user, isFirst] = users.emplace(Place(target.directory), target.key);
    if (!isFirst)
      warnings.push_back(target.key + ".directory: is that of " + user->second + " too" +
                         (keepsLogs ? "" : ": each counts, and removes, the logs of the other"));
  }
}

// The scaler ignores a rule for a variable that the node does not have, without a message.
void AddRules(const CString& key, const CPlcNodeConfig& node, std::vector<CString>& warnings) {
  int index = 0;
  for (const CScalerConfigNode& rule : node.m_scaler.m_nodes) {
    const CString place = KeyPath(key + ".scaler", index++);
    if (FindIn(node.m_varNames, rule.m_varName) < 0)
      warnings.push_back(place + ".varName: the node has no variable " + rule.m_varName);
  }
}

// The input stage leaves out a node with an unknown driver, without a message.
void AddNodes(const CInputConfig& input, std::vector<CString>& warnings) {
  int index = 0;
  for (const CPlcNodeConfig* node : input.m_plcNodes) {
    const int type = node->m_driver.plcType;
    const CString key = KeyPath("input.plcNodes", index++);
    if (CDriverFactory::Instance()->GetDriverIndex(type) < 0)
      warnings.push_back(key + ": no driver " + CString(std::to_string(type)) +
                         " is installed: the node is left out");
    AddRules(key, *node, warnings);
  }
}

void AddWrittenNodes(const CPlcMultiConfig& plcWrite, std::vector<CString>& warnings) {
  int index = 0;
  for (const CPlcSingleConfig* node : plcWrite.m_nodes)
    AddRules(KeyPath("plcWrite.nodes", index++), node->m_node, warnings);
}

bool Assigns(const CStringArray& equations, const char* name) {
  CString assigned;
  return std::any_of(equations.begin(), equations.end(), [&](const CString& equation) {
    return FindAssignedName(equation, assigned) && assigned == name;
  });
}

// A flag that neither an equation nor the sample sets is always 0.
void AddFlags(const CConfiguration& configuration, const CStringArray& names,
              std::vector<CString>& warnings) {
  for (const CLogTarget& target : FindLogTargets(configuration))
    for (const char* flag : target.flags)
      if (FindIn(names, flag) < 0 && !Assigns(target.enableEquations, flag))
        warnings.push_back(target.key + ".enableEquations: nothing assigns " + flag +
                           ": nothing is ever written");
}

// The host sets the list; a stored list with other names comes from an earlier state of the configuration.
void AddBaseVars(const CStringArray& stored, const CStringArray& input, std::vector<CString>& warnings) {
  if (!stored.IsEmpty() && !(stored == input))
    warnings.push_back("trend.baseVars: differ from the variables of the input, which are used");
}

}  // namespace

std::vector<CString> FindWarnings(const CConfiguration& configuration, const CStageNames& names,
                                  bool keepsLogs) {
  const bool isLive = !configuration.m_input.m_simulating;
  std::vector<CString> warnings;
  if (!keepsLogs) warnings = FindLogRefusals(configuration, false);
  if (const CString fault = FindClockFault(); isLive && !fault.IsEmpty()) warnings.push_back(fault);
  if (isLive) AddNodes(configuration.m_input, warnings);
  AddWrittenNodes(configuration.m_plcWrite, warnings);
  AddPlaces(configuration, keepsLogs, warnings);
  if (names.hasInput) {
    AddFlags(configuration, names.afterSmart, warnings);
    AddBaseVars(configuration.m_trend.m_baseVars, names.input, warnings);
  }
  return warnings;
}

}  // namespace vastra
