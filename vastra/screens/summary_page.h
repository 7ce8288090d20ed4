// CSummaryPage: the page of the configuration sheet for the summaries. It edits a copy of a
// CMultiSummaryConfig.
#pragma once

#include "vastra/screens/item_page.h"

namespace vastra {

class VASTRA_API CSummaryPage : public CItemPage<CSummaryConfig, CSummaryNodeDlg> {
  DECLARE_DYNAMIC(CSummaryPage)
 public:
  CSummaryPage();

  void SetConfiguration(const CMultiSummaryConfig& config) { SetItems(config.m_summaries); }
  void GetConfiguration(CMultiSummaryConfig& config) const { GetItems(config.m_summaries); }

 protected:
  void OnInitDialog() override;

 private:
  void OnAddsummaryButton() { AddItem(); }
  void OnEditsummaryButton() { EditItem(); }
  void OnDblclkSummaryList() { EditItem(); }
  void OnDelsummaryButton() { DeleteItem(); }
};

}  // namespace vastra
