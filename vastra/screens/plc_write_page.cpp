#include "vastra/screens/plc_write_page.h"

#include <new>

#include "vastra/screens/driver_type_dlg.h"
#include "vastra/screens/node_list.h"

namespace vastra {
namespace {

constexpr const char* kWriteNodes = "Net nodes";
constexpr const char* kDisable = "Disable Writing";
constexpr const char* kAdd = "Add ";
constexpr const char* kEdit = "Edit ";
constexpr const char* kDelete = "Delete ";
constexpr CControl kPlcWritePageControls[] = {
    {CControl::groupBox, kWriteNodes, {7, 7, 266, 168}}, {CControl::listBox, kWriteNodes, {14, 21, 170, 147}},
    {CControl::button, kAdd, {191, 21, 75, 14}},         {CControl::button, kEdit, {191, 38, 75, 14}},
    {CControl::button, kDelete, {191, 55, 75, 14}},      {CControl::checkBox, kDisable, {14, 181, 160, 10}},
};
constexpr CDialogTemplate kPlcWritePageTemplate = {"Plc Write", {280, 198}, kPlcWritePageControls};

}  // namespace

IMPLEMENT_DYNCREATE(CPlcWritePage, CPropertyPage)

CPlcWritePage::CPlcWritePage() : CPropertyPage(kPlcWritePageTemplate) {}

void CPlcWritePage::SetConfiguration(const CPlcMultiConfig& config) {
  m_disableWriting = config.m_disableWriting;
  try {
    for (const CPlcSingleConfig* single : config.m_nodes) m_nodes.AddTail(new CPlcNodeConfig(single->m_node));
  } catch (const std::bad_alloc&) {
    DeleteList();  // a part of the nodes must not be taken for all of them
  }
}

void CPlcWritePage::GetConfiguration(CPlcMultiConfig& config) const {
  config.m_nodes.RemoveAll();
  config.m_disableWriting = m_disableWriting;
  for (const CPlcNodeConfig* node : m_nodes) {
    auto* single = new CPlcSingleConfig;
    single->m_node = *node;
    config.m_nodes.AddTail(single);
  }
}

void CPlcWritePage::UpdatePLCList() {
  if (Widget()) ShowNodes(List(kWriteNodes), m_nodes);
}

void CPlcWritePage::OnInitDialog() {
  Button(kDisable).SetCheck(m_disableWriting);
  UpdatePLCList();
  On(kDisable, [this] { m_disableWriting = Button(kDisable).GetCheck(); });
  On(kAdd, [this] { OnAddplcwriteButton(); });
  On(kEdit, [this] { OnEditplcwriteButton(); });
  On(kDelete, [this] { OnDelplcwriteButton(); });
  On(
      kWriteNodes, [this] { OnDblclkPlcwriteList(); }, ENotify::doubleClicked);
}

void CPlcWritePage::Prepare(CDriverTypeDlg& dialog) const {
  dialog.m_mode = CDriverTypeDlg::writeNode;
  dialog.m_pInputPage = m_pInputPage;
  dialog.m_pSmartPage = m_pSmartPage;
}

void CPlcWritePage::OnAddplcwriteButton() {
  CDriverTypeDlg dialog(this);
  Prepare(dialog);
  AddNode(dialog, List(kWriteNodes), m_nodes);
}

void CPlcWritePage::OnEditplcwriteButton() {
  CDriverTypeDlg dialog(this);
  Prepare(dialog);
  EditNode(dialog, List(kWriteNodes), m_nodes);
}

void CPlcWritePage::OpenNode(int index) {
  List(kWriteNodes).SetCurSel(index);
  OnEditplcwriteButton();
}

void CPlcWritePage::OnDelplcwriteButton() { DeleteNode(List(kWriteNodes), m_nodes); }

}  // namespace vastra
