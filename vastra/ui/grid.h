// CGXGridWnd: a virtual grid. It stores no cells: it asks its owner for the text of each visible cell.
//
// It does not store edited cells either. The user's input becomes the text of the current cell, and the owner
// is called to store it.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

// A cell.
struct CGXStyle {
  enum EControl { fixed, edit, checkBox };

  CString text;  // of a check box "1" (checked) or "0"
  EControl control = fixed;
};

class VASTRA_API CGXGridWnd : public CWnd {
 public:
  ~CGXGridWnd() override;
  // Creates the grid in the area with caption of dialog's template.
  void SubclassDlgItem(const CDialog& dialog, const char* caption);

  // Numbers without the headers, which are row 0 and column 0.
  virtual UINT GetRowCount() const = 0;
  virtual UINT GetColCount() const = 0;
  virtual void GetStyleRowCol(UINT row, UINT col, CGXStyle& style) const = 0;

  void Reset();  // call it after a change of the counts
  void SetColWidth(UINT col, int pixels);
  void SetHeaderHeight(int pixels);  // of row 0; the height of the other rows is that of their font
  void SetFontSize(int points);
  void SetReadOnly(bool readOnly);  // initially true
  void Redraw();                    // at once
  // Ends the editing of a cell as if the user had left it.
  void TransferCurrentCell();

 protected:
  // The new text, during one of the next two calls.
  const CString& GetCurrentText() const { return m_current; }
  // The user has left a cell after a change. False: the former text is kept.
  virtual bool OnValidateCell(UINT /*row*/, UINT /*col*/) { return true; }
  // A check box has been clicked.
  virtual void OnClickedButtonRowCol(UINT /*row*/, UINT /*col*/) {}

 private:
  class CModel;
  void Leave();

  CString m_current;
};

}  // namespace vastra
