// COutputPage: the page of the configuration sheet for the log outputs. It edits a copy of a
// CMultiOutputConfig.
#pragma once

#include "vastra/screens/item_page.h"

namespace vastra {

class VASTRA_API COutputPage : public CItemPage<COutputConfig, COutputNodeDlg> {
  DECLARE_DYNAMIC(COutputPage)
 public:
  COutputPage();

  void SetConfiguration(const CMultiOutputConfig& config) { SetItems(config.m_outputs); }
  void GetConfiguration(CMultiOutputConfig& config) const { GetItems(config.m_outputs); }

 protected:
  void OnInitDialog() override;

 private:
  void OnAddoutputButton() { AddItem(); }
  void OnEditoutputButton() { EditItem(); }
  void OnDblclkOutputList() { EditItem(); }
  void OnDeloutputButton() { DeleteItem(); }
};

}  // namespace vastra
