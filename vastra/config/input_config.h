// CInputConfig: the source of the samples and their preprocessing. A member of CLogInput.
#pragma once

#include "vastra/config/plc_node_config.h"

namespace vastra {

class VASTRA_API CInputConfig : public CObject {
  DECLARE_DYNAMIC(CInputConfig)
 public:
  using CObject::Serialize;
  // Loading replaces the nodes but appends to m_inputFiles: clear a used object before loading.
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  virtual void TextSerialize(CArchive& ar);  // the report, to an archive that stores
  void Clear();                              // deletes the nodes and restores all defaults

  CString m_preEquationText;  // the preprocessing equations as the user typed them
  int m_autoStart = 0;        // 1: the host starts logging when the configuration is loaded
  int m_asFastAsPossible = 0;
  UINT m_scanPeriod = 5000;     // milliseconds
  CStringArray m_preNewVars;    // the variables that leave the preprocessing
  CStringArray m_preEquations;  // the preprocessing equations, one statement per element
  int m_preprocess = 0;         // 1: the preprocessing equations run after the input
  CStringList m_inputFiles;     // the logs to replay
  int m_simulating = 0;         // 1: replay m_inputFiles; 0: read m_plcNodes
  COwnedList<CPlcNodeConfig> m_plcNodes;
};

}  // namespace vastra
