// CPlcWritePage: the page of the configuration sheet for the PLC nodes that are written. It works on copies:
// a CPlcMultiConfig goes in and comes out.
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

  // The pages that tell which variables there are, the host's; null: none.
  void SetInputPointer(CInputPage* page) { m_pInputPage = page; }
  void SetSmartPointer(CSmartPage* page) { m_pSmartPage = page; }

  // Adds its nodes to those that the page has: for a page with none.
  void SetConfiguration(const CPlcMultiConfig& config);
  void GetConfiguration(CPlcMultiConfig& config) const;  // m_nodeNumber stays

  // Shows the names of the nodes anew, in list order.
  void UpdatePLCList();
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
