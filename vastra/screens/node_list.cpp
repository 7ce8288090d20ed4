#include "vastra/screens/node_list.h"

#include "vastra/screens/driver_type_dlg.h"

namespace vastra {
namespace {

// Index of the marked entry; -1: nothing is marked, and the user was told.
int Marked(const CListBox& list) {
  const int index = list.GetCurSel();
  if (index < 0) AfxMessageBox("There isn't any node selected");
  return index;
}

// Runs dialog on node. 1: OK, and node has changed.
int Run(CDriverTypeDlg& dialog, CListBox& list, CPlcNodeConfig& node) {
  dialog.m_pNameList = &list;
  dialog.m_pScaler = &node.m_scaler;
  dialog.m_name = node.m_nodeName;
  dialog.m_varNames = node.m_varNames;
  dialog.m_driver = node.m_driver;
  dialog.m_absent = node.m_absent;
  dialog.m_aliveVar = node.m_aliveVar;
  if (dialog.DoModal() != IDOK) return 0;
  node.m_nodeName = dialog.m_name;
  node.m_varNames = dialog.m_varNames;
  node.m_driver = dialog.m_driver;
  node.m_absent = dialog.m_absent;
  node.m_aliveVar = dialog.m_aliveVar;
  return 1;
}

}  // namespace

void ShowNodes(CListBox& list, const CPlcNodes& nodes) {
  list.ResetContent();
  for (const CPlcNodeConfig* node : nodes) list.AddString(node->m_nodeName);
}

void AddNode(CDriverTypeDlg& dialog, CListBox& list, CPlcNodes& nodes) {
  auto node = std::make_unique<CPlcNodeConfig>();
  if (dialog.m_hasAbsence) node->m_absent = EAbsent::nan;
  dialog.m_driverId = CDriverTypeDlg::kNoDriver;
  if (!Run(dialog, list, *node)) return;
  nodes.AddTail(node.release());
  ShowNodes(list, nodes);
}

void EditNode(CDriverTypeDlg& dialog, CListBox& list, CPlcNodes& nodes) {
  const int index = Marked(list);
  if (index < 0) return;
  CPlcNodeConfig& node = **std::next(nodes.begin(), index);
  dialog.m_driverId = static_cast<UINT>(node.m_driver.plcType);
  if (Run(dialog, list, node)) ShowNodes(list, nodes);
}

void DeleteNode(CListBox& list, CPlcNodes& nodes) {
  const int index = Marked(list);
  if (index < 0) return;
  const CString name = list.GetText(index);
  if (name.IsEmpty()) {
    AfxMessageBox("Node index is wrong");
    return;
  }
  for (POSITION pos = nodes.GetHeadPosition(); pos;) {
    const POSITION at = pos;
    const CPlcNodeConfig* node = nodes.GetNext(pos);
    if (node->m_nodeName != name) continue;
    nodes.RemoveAt(at);
    delete node;
  }
  ShowNodes(list, nodes);
}

}  // namespace vastra
