#include "vastra/screens/item_page.h"

#include "vastra/screens/output_node_dlg.h"
#include "vastra/screens/summary_node_dlg.h"

namespace vastra {

template <class TConfig, class TDialog>
void CItemPage<TConfig, TDialog>::SetItems(const COwnedList<TConfig>& items) {
  m_items.RemoveAll();
  for (const TConfig* item : items) m_items.Add(*item);
  if (Widget()) ShowNames();
}

template <class TConfig, class TDialog>
void CItemPage<TConfig, TDialog>::GetItems(COwnedList<TConfig>& items) const {
  items.RemoveAll();
  for (const TConfig& item : m_items) items.AddTail(new TConfig(item));
}

template <class TConfig, class TDialog>
void CItemPage<TConfig, TDialog>::ShowNames() {
  List(m_list).ResetContent();
  for (const TConfig& item : m_items) List(m_list).AddString(item.m_name);
}

template <class TConfig, class TDialog>
int CItemPage<TConfig, TDialog>::Run(TDialog& dialog) {
  dialog.m_pInputPage = m_pInputPage;
  dialog.m_pSmartPage = m_pSmartPage;
  return dialog.DoModal() == IDOK;
}

template <class TConfig, class TDialog>
void CItemPage<TConfig, TDialog>::AddItem() {
  TDialog dialog(this);
  if (!Run(dialog)) return;
  m_items.Add(dialog.m_config);
  List(m_list).AddString(dialog.m_config.m_name);
}

template <class TConfig, class TDialog>
void CItemPage<TConfig, TDialog>::EditItem() {
  const int index = List(m_list).GetCurSel();
  if (index < 0) return;
  TDialog dialog(this);
  dialog.m_config = m_items[index];
  if (!Run(dialog)) return;
  m_items[index] = dialog.m_config;
  List(m_list).SetText(index, dialog.m_config.m_name);
}

template <class TConfig, class TDialog>
void CItemPage<TConfig, TDialog>::OpenItem(int index) {
  List(m_list).SetCurSel(index);
  EditItem();
}

template <class TConfig, class TDialog>
void CItemPage<TConfig, TDialog>::DeleteItem() {
  const int index = List(m_list).GetCurSel();
  if (index < 0) return;
  m_items.RemoveAt(index);
  List(m_list).DeleteString(index);
  List(m_list).SetCurSel(-1);  // a second click must not delete the next item
}

template class CItemPage<COutputConfig, COutputNodeDlg>;
template class CItemPage<CSummaryConfig, CSummaryNodeDlg>;

}  // namespace vastra
