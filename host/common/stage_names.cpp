#include "host/common/stage_names.h"

#include "vastra/stages/log_input.h"

namespace vastra {

bool UsesSmart(const CSmartConfig& smart) {
  return !smart.m_inputVars.IsEmpty() || !smart.m_outputVars.IsEmpty();
}

void AddLaterNames(const CConfiguration& configuration, CStageNames& names) {
  const bool preprocesses = configuration.m_input.m_preprocess != 0;
  names.hasInput = preprocesses || names.hasSource;
  names.input = preprocesses ? configuration.m_input.m_preNewVars : names.source;
  names.afterSmart = names.input;
  if (UsesSmart(configuration.m_smart)) names.afterSmart.Append(configuration.m_smart.m_outputVars);
}

CStageNames FindStageNames(const CConfiguration& configuration) {
  CStageNames names;
  CLogInput input;
  *input.GetOptions() = configuration.m_input;
  names.hasSource = input.PreGetInitialVarNames(names.source) != 0;
  AddLaterNames(configuration, names);
  return names;
}

CStringArray TrendNames(const CStageNames& names, const CTrendConfig& trend) {
  CStringArray result = names.input;
  if (trend.m_calculateExtra) result.Append(trend.m_extraVars);
  return result;
}

}  // namespace vastra
