// CGXGridWnd: a virtual grid. It holds no cells: for each cell that is to be seen it asks for the text.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

// What a cell shows.
struct CGXStyle {
  CString text;
};

class VASTRA_API CGXGridWnd : public CWnd {
 public:
  // Takes the place that dialog's template has for it under caption. The grid outlives the dialog's window.
  void SubclassDlgItem(const CDialog& dialog, const char* caption);

  // Rows and columns without the headers, which are row 0 and column 0.
  virtual UINT GetRowCount() const = 0;
  virtual UINT GetColCount() const = 0;
  virtual void GetStyleRowCol(UINT row, UINT col, CGXStyle& style) const = 0;

  void Reset();  // the counts have changed
  void SetColWidth(UINT col, int pixels);
  void SetHeaderHeight(int pixels);  // of row 0; the other rows are as high as their font asks
  void SetFontSize(int points);
  void Redraw();  // at once

 private:
  class CModel;
};

}  // namespace vastra
