// CItemPage: the common part of the pages of the log outputs and of the summaries. It edits copies; entry i
// of its list box is item i.
#pragma once

#include "vastra/config/output_config.h"
#include "vastra/config/summary_config.h"
#include "vastra/ui/property_sheet.h"

namespace vastra {

class CInputPage;
class COutputNodeDlg;
class CSmartPage;
class CSummaryNodeDlg;

template <class TConfig, class TDialog>
class CItemPage : public CPropertyPage {
 public:
  // The pages that provide the variables, owned by the host; null: none.
  void SetInputPointer(CInputPage* page) { m_pInputPage = page; }
  void SetSmartPointer(CSmartPage* page) { m_pSmartPage = page; }

  // Marks an item of the list and opens its dialog; no effect for an index that no item has.
  void OpenItem(int index);

 protected:
  // list: the caption of the list box.
  CItemPage(const CDialogTemplate& model, const char* list) : CPropertyPage(model), m_list(list) {}

  // Can be called with or without a window.
  void SetItems(const COwnedList<TConfig>& items);
  void GetItems(COwnedList<TConfig>& items) const;  // replaces the content

  void OnInitDialog() override { ShowNames(); }
  void AddItem();
  void EditItem();    // the marked item, if any
  void DeleteItem();  // the marked item, if any

 private:
  void ShowNames();
  int Run(TDialog& dialog);

  const char* m_list;
  CArray<TConfig> m_items;
  CInputPage* m_pInputPage = nullptr;
  CSmartPage* m_pSmartPage = nullptr;
};

extern template class VASTRA_API CItemPage<COutputConfig, COutputNodeDlg>;
extern template class VASTRA_API CItemPage<CSummaryConfig, CSummaryNodeDlg>;

}  // namespace vastra
