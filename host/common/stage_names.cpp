#include "host/common/stage_names.h"

#include "vastra/plc/driver_factory.h"
#include "vastra/stages/log_input.h"

namespace vastra {

bool UsesSmart(const CSmartConfig& smart) {
  return !smart.m_inputVars.IsEmpty() || !smart.m_outputVars.IsEmpty();
}

CStageNames FindStageNames(const CConfiguration& configuration) {
  CStageNames names;
  CLogInput input;
  *input.GetOptions() = configuration.m_input;
  names.hasSource = input.PreGetInitialVarNames(names.source) != 0;
  const bool preprocesses = configuration.m_input.m_preprocess != 0;
  names.hasInput = preprocesses || names.hasSource;
  names.input = preprocesses ? configuration.m_input.m_preNewVars : names.source;
  names.behindSmart = names.input;
  if (UsesSmart(configuration.m_smart)) names.behindSmart.Append(configuration.m_smart.m_outputVars);
  return names;
}

CStringArray TrendNames(const CConfiguration& configuration, const CStageNames& names) {
  CStringArray result = names.input;
  if (configuration.m_trend.m_calculateExtra) result.Append(configuration.m_trend.m_extraVars);
  return result;
}

CString ExplainSilence(const CInputConfig& input) {
  if (input.m_simulating) return {};
  if (input.m_plcNodes.IsEmpty()) return "there is no PLC node";
  for (const CPlcNodeConfig* node : input.m_plcNodes)
    if (CDriverFactory::Instance()->GetDriverIndex(node->m_driver.plcType) >= 0) return {};
  return "no PLC node has a driver that is installed";
}

CString ExplainSilence(const CPlcMultiConfig& plcWrite) {
  for (const CPlcSingleConfig* node : plcWrite.m_nodes)
    if (CString why = ExplainSilence(*node); !why.IsEmpty()) return why;
  return {};
}

CString ExplainSilence(const CPlcSingleConfig& node) {
  const int type = node.m_node.m_driver.plcType;
  if (CDriverFactory::Instance()->GetDriverIndex(type) >= 0) return {};
  return "no driver " + CString(std::to_string(type)) + " is installed";
}

}  // namespace vastra
