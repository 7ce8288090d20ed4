// CGridWnd: the grid of names and numbers that screens and views share. It stores no cells: it reads them
// from arrays of its owner whenever it paints.
#pragma once

#include "vastra/platform/array.h"
#include "vastra/ui/grid.h"

namespace vastra {

class CGridWnd : public CGXGridWnd {
 public:
  // Call it after SubclassDlgItem. Shows 30 rows of a name and its value; rows past the arrays are blank. The
  // caller owns the arrays, which may grow and shrink.
  void InitGrid(const CStringArray* names, const CArray<float, float>* values);
  // Shows for each name its scale, its limits and whether the limits apply, 1 or 0. The user edits all but
  // the names; edits go to the arrays. The caller owns the arrays, which have an element for each name.
  void InitGridScaler(const CStringArray* names, CArray<float, float>* scales, CArray<float, float>* minimums,
                      CArray<float, float>* maximums, CArray<int, int>* clamps);

  UINT GetRowCount() const override { return m_rows; }
  UINT GetColCount() const override { return m_cols; }
  void GetStyleRowCol(UINT row, UINT col, CGXStyle& style) const override;

 protected:
  bool OnValidateCell(UINT row, UINT col) override;
  void OnClickedButtonRowCol(UINT row, UINT col) override;

 private:
  enum EMode { unset, scan, scaler };
  struct CColumn;
  struct CMode;
  static const CMode& ModeOf(int mode);

  void Init(EMode mode, UINT rows);
  CString NameText(int index) const;  // index from 0; empty past the end
  CString ValueText(int index) const { return NumberText(m_pValues, index); }
  CString ScaleText(int index) const { return NumberText(m_pScales, index); }
  CString MinimumText(int index) const { return NumberText(m_pMinimums, index); }
  CString MaximumText(int index) const { return NumberText(m_pMaximums, index); }
  CString ClampText(int index) const;
  CString NumberText(const CArray<float, float>* numbers, int index) const;

  CString m_format = "%.2f";
  UINT m_rows = 0;
  UINT m_cols = 0;
  int m_mode = unset;
  const CArray<float, float>* m_pValues = nullptr;
  const CStringArray* m_pNames = nullptr;
  CArray<float, float>* m_pScales = nullptr;
  CArray<float, float>* m_pMinimums = nullptr;
  CArray<float, float>* m_pMaximums = nullptr;
  CArray<int, int>* m_pClamps = nullptr;
};

}  // namespace vastra
