// CNameListDlg: the common part of the dialogs with a list of names. Each derived dialog has its own template
// and calls these operations from its buttons.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

// Captions in several templates; the odd blanks are intended.
constexpr const char* kVariableList = "Variable List";
constexpr const char* kInsertVariable = "Insert  New Variable";
constexpr const char* kDeleteVariable = "Delete Variable";

class VASTRA_API CNameListDlg : public CDialog {
 protected:
  // list: the caption of the edited list. title: of the message boxes; empty: the program's name.
  CNameListDlg(const CDialogTemplate& model, const char* list, const char* title, CWnd* parent)
      : CDialog(model, parent), m_caption(list), m_title(title) {}

  CListBox& Names() const { return List(m_caption); }
  void Tell(const char* text) const { AfxMessageBox(text, m_title, MB_ICONEXCLAMATION); }

  // Asks for a name and appends it: 1. Or 0: the user cancelled or the list has that name already.
  int InsertVariable();
  // Index of the marked entry. -1: the list is empty; or nothing is marked, and the user was told.
  int MarkedVariable() const;
  // Removes an entry and the mark.
  void DeleteVariable(int index);

  // The buttons of lists without fixed names; ConnectFreeList connects some of them.
  void DeleteMarked();
  void OnDeleteallButton() { Names().ResetContent(); }
  void OnImportButton();
  void OnExportButton();
  void ConnectFreeList();

 private:
  const char* m_caption;
  const char* m_title;
};

}  // namespace vastra
