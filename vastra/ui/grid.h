// CGXGridWnd: a virtual grid. It holds no cells: for each cell that is to be seen it asks for the text.
//
// Cells that can be edited keep nothing either. What the user does in one becomes the text of the current
// cell, and the owner is told to take it over.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

// What a cell is.
struct CGXStyle {
  enum EControl { fixed, edit, checkBox };

  CString text;  // of a check box "1", checked, or "0"
  EControl control = fixed;
};

class VASTRA_API CGXGridWnd : public CWnd {
 public:
  ~CGXGridWnd() override;
  // Takes the place that dialog's template has for it
  // under caption.
  void SubclassDlgItem(const CDialog& dialog, const char* caption);

  // Rows and columns without the headers, which are row 0 and column 0.
  virtual UINT GetRowCount() const = 0;
  virtual UINT GetColCount() const = 0;
  virtual void GetStyleRowCol(UINT row, UINT col, CGXStyle& style) const = 0;

  void Reset();  // the counts have changed
  void SetColWidth(UINT col, int pixels);
  void SetHeaderHeight(int pixels);  // of row 0; the other rows are as high as their font asks
  void SetFontSize(int points);
  void SetReadOnly(bool readOnly);  // at first it is
  void Redraw();                    // at once
  // Ends what the user edits as if the cell were left.
  void TransferCurrentCell();

 protected:
  // What the user has made of the cell that one of the next two is told of.
  const CString& GetCurrentText() const { return m_current; }
  // A cell whose text the user has changed is left. False: the cell keeps its text from before.
  virtual bool OnValidateCell(UINT /*row*/, UINT /*col*/) { return true; }
  // A check box has been clicked.
  virtual void OnClickedButtonRowCol(UINT /*row*/, UINT /*col*/) {}

 private:
  class CModel;
  void Leave();

  CString m_current;
};

}  // namespace vastra
