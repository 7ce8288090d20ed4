#include "vastra/screens/name_list_dlg.h"

#include "vastra/screens/new_var_dlg.h"
#include "vastra/screens/text_files.h"
#include "vastra/screens/text_list_rules.h"

namespace vastra {

int CNameListDlg::InsertVariable() {
  CNewVarDlg dialog(this);
  if (dialog.DoModal() != IDOK) return 0;
  if (Names().Find(dialog.m_name) >= 0) {
    Tell("This variable already exists in the list");
    return 0;
  }
  Names().AddString(dialog.m_name);
  return 1;
}

int CNameListDlg::MarkedVariable() const {
  if (Names().GetCount() == 0) return -1;
  const int index = Names().GetCurSel();
  if (index < 0) Tell("You must select a variable");
  return index;
}

void CNameListDlg::DeleteVariable(int index) {
  Names().DeleteString(index);
  Names().SetCurSel(-1);
}

void CNameListDlg::DeleteMarked() {
  if (const int index = MarkedVariable(); index >= 0) DeleteVariable(index);
}

void CNameListDlg::OnImportButton() {
  CString text;
  if (!ImportText(m_title, text)) return;
  const CStringArray names = LinesOf(text);
  if (HasRepeats(names))
    Tell("Invalid list, variables must not be repeated.");
  else
    Names().SetTexts(names);
}

void CNameListDlg::OnExportButton() {
  if (Names().GetCount() == 0)
    Tell("You can't export an empty list");
  else
    ExportText(m_title, ListText(Names().GetTexts()));
}

void CNameListDlg::ConnectFreeList() {
  On("Import", [this] { OnImportButton(); });
  On("Export ", [this] { OnExportButton(); });
  On("Delete All", [this] { OnDeleteallButton(); });
}

}  // namespace vastra
