// CPlcWritePage: the page of the configuration sheet for the PLC nodes that are written. It edits a copy of a
// CPlcMultiConfig.
#pragma once

#include "vastra/config/plc_write_config.h"
#include "vastra/ui/property_sheet.h"

namespace vastra {

class CDriverTypeDlg;
class CInputPage;
class CSmartPage;

class VASTRA_API CPlcWritePage : public CPropertyPage {
  DECLARE_DYNAMIC(CPlcWritePage)
 public:
  CPlcWritePage();

  // The pages that provide the variables, owned by the host; null: none.
  void SetInputPointer(CInputPage* page) { m_pInputPage = page; }
  void SetSmartPointer(CSmartPage* page) { m_pSmartPage = page; }

  // Appends the nodes of config to those of the page, so call it for a page without nodes.
  void SetConfiguration(const CPlcMultiConfig& config);
  void GetConfiguration(CPlcMultiConfig& config) const;  // except m_nodeNumber

  // Refills the list box with the names of the nodes, in order.
  void UpdatePLCList();
  // Marks a node of the list and opens its dialogs; no effect for an index that no node has.
  void OpenNode(int index);
  // Deletes all nodes.
  void DeleteList() { m_nodes.RemoveAll(); }

 protected:
  void OnInitDialog() override;

 private:
  void OnAddplcwriteButton();
  void OnEditplcwriteButton();
  void OnDblclkPlcwriteList() { OnEditplcwriteButton(); }
  void OnDelplcwriteButton();
  void Prepare(CDriverTypeDlg& dialog) const;

  CInputPage* m_pInputPage = nullptr;
  CSmartPage* m_pSmartPage = nullptr;
  COwnedList<CPlcNodeConfig> m_nodes;
  int m_disableWriting = 0;
};

}  // namespace vastra
