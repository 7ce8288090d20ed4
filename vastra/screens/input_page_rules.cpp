#include "vastra/screens/input_page_rules.h"

namespace vastra {

CInputControls EnabledControls(int source, int preprocess, int scanMode) {
  return {!source, source != 0, preprocess != 0, scanMode != 0};
}

const char* FaultOf(const CInputConfig& config) {
  if (!config.m_simulating && config.m_plcNodes.IsEmpty())
    return "Wrong Configuration!!\n If the logger is going to be connected to a PLC net, you must select one "
           "net node at least";
  if (config.m_simulating && config.m_inputFiles.IsEmpty())
    return "Wrong Configuration!!\n If the logger is simulating you must select input logs files";
  if (config.m_preprocess && config.m_preNewVars.IsEmpty())
    return "Wrong Configuration!!\n If the preprocess input option is checked you must select one variable "
           "at least from the variables list";
  return nullptr;
}

}  // namespace vastra
