// CInputConfig: where samples come from and what is done to them first. Embedded in CLogInput.
#pragma once

#include "vastra/config/plc_node_config.h"

namespace vastra {

class VASTRA_API CInputConfig : public CObject {
  DECLARE_DYNAMIC(CInputConfig)
 public:
  using CObject::Serialize;
  // Loading replaces the nodes and appends to m_inputFiles: whoever loads into a used object clears it first.
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  virtual void TextSerialize(CArchive& ar);  // the report, to an archive that stores
  void Clear();                              // deletes the nodes and brings all defaults back

  CString m_preEquationText;  // the preprocessing equations as the user typed them
  int m_autoStart = 0;        // the host starts logging by itself once the configuration is loaded
  int m_asFastAsPossible = 0;
  UINT m_scanPeriod = 5000;     // milliseconds
  CStringArray m_preNewVars;    // the variables that the preprocessing gives out
  CStringArray m_preEquations;  // the preprocessing equations, one per element
  int m_preprocess = 0;         // 1: preprocessing equations stand behind the input
  CStringList m_inputFiles;     // the logs to replay
  int m_simulating = 0;         // 1: replay m_inputFiles; 0: connected to m_plcNodes
  COwnedList<CPlcNodeConfig> m_plcNodes;
};

}  // namespace vastra
