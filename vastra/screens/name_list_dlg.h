// CNameListDlg: what the dialogs around a list of names have in common. Each brings its template and calls
// these operations from its buttons.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

// Captions that several templates have, and blanks in odd places with them.
constexpr const char* kVariableList = "Variable List";
constexpr const char* kInsertVariable = "Insert  New Variable";
constexpr const char* kDeleteVariable = "Delete Variable";

class VASTRA_API CNameListDlg : public CDialog {
 protected:
  // list: the caption of the list that is edited. title: of the boxes; empty: the program's name.
  CNameListDlg(const CDialogTemplate& model, const char* list, const char* title, CWnd* parent)
      : CDialog(model, parent), m_caption(list), m_title(title) {}

  CListBox& Names() const { return List(m_caption); }
  void Tell(const char* text) const { AfxMessageBox(text, m_title, MB_ICONEXCLAMATION); }

  // Asks for a name and adds it at the end: 1, or 0 if the user gave up or the name is there already.
  int InsertVariable();
  // Index of the marked entry. -1: the list is empty, or nothing is marked and the user was told.
  int MarkedVariable() const;
  // Takes an entry out; nothing is marked then.
  void DeleteVariable(int index);

  // The buttons of lists that are free as a whole, and the call that connects them.
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
