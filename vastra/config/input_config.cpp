#include "vastra/config/input_config.h"

#include "vastra/config/stored_form.h"
#include "vastra/core/text_serializer.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CInputConfig, CObject)

void CInputConfig::Fields(CFieldWalk& walk) {
  if (walk.IsLoading()) m_plcNodes.RemoveAll();
  auto nodes = static_cast<UINT>(m_plcNodes.GetCount());
  walk.Flag("simulating", m_simulating);
  walk.Flag("preprocess", m_preprocess);
  walk.Number(nodes);
  walk.Flag("autoStart", m_autoStart);
  walk.Field("scanPeriod", m_scanPeriod);
  walk.Flag("asFastAsPossible", m_asFastAsPossible);
  walk.Field("preEquationText", m_preEquationText);
  walk.TailFirst("plcNodes", m_plcNodes, nodes);
  walk.Paths("inputFiles", m_inputFiles);
  walk.Equations("preEquations", "preEquationText", m_preEquations);
  walk.Field("preNewVars", m_preNewVars);
}

void CInputConfig::Serialize(CArchive& ar, UINT version) { SerializeFields(*this, ar, version); }

void CInputConfig::Clear() { *this = CInputConfig(); }

void CInputConfig::TextSerialize(CArchive& ar) {
  if (!ar.IsStoring()) return;
  CTextReport report(ar);
  int connected = !m_simulating;
  report.Add("[*** Input ***]\r\n\r\n");
  report.Add("[AutoStart]\r\n", m_autoStart, "\r\n");
  report.Add("[Plc Input (No = Simulating)]\r\n", connected, "\r\n");
  report.Add("[Input File Names]\r\n", m_inputFiles);
  report.Add("[Number of Plc Nodes]\r\n", report.Decimal(m_plcNodes.GetCount()), "\r\n\r\n");
  report.Add("[Plc Node Configurations]\r\n", "\r\n");
  for (CPlcNodeConfig* node : m_plcNodes) node->TextSerialize(ar);
  report.Add("[Preprocessing]\r\n", m_preprocess, "\r\n");
  report.Add("[Preprocessing Equations]\r\n", m_preEquations, "\r\n");
  report.Add("[Preprocessing New Variables]\r\n", m_preNewVars);
}

}  // namespace vastra
