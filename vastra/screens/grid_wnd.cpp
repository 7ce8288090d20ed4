#include "vastra/screens/grid_wnd.h"

#include <span>

namespace vastra {
namespace {

constexpr UINT kScanRows = 30;
constexpr int kHeaderHeight = 20;  // pixels
constexpr int kFontSize = 8;       // points

template <class T>
bool Holds(const T* array, int index) {
  return array && index < array->GetSize();
}

}  // namespace

// A column, from the header column on: what its head shows, its width in pixels, what its cells show.
struct CGridWnd::CColumn {
  const char* head;
  int width;
  CString (CGridWnd::*text)(int index) const;
};

struct CGridWnd::CMode {
  const char* format;  // of a number
  std::span<const CColumn> columns;
};

const CGridWnd::CMode& CGridWnd::ModeOf(int mode) {
  static constexpr CColumn kScan[] = {{"Variables", 100, &CGridWnd::NameText},
                                      {"Values", 85, &CGridWnd::ValueText}};
  static constexpr CMode kModes[] = {{"%.2f", {}}, {"%.2f", kScan}};
  return kModes[mode];
}

void CGridWnd::InitGrid(const CStringArray* names, const CArray<float, float>* values) {
  m_pNames = names;
  m_pValues = values;
  Init(scan, kScanRows);
}

void CGridWnd::Init(EMode mode, UINT rows) {
  const auto& [format, columns] = ModeOf(mode);
  m_mode = mode;
  m_format = format;
  m_rows = rows;
  m_cols = static_cast<UINT>(columns.size()) - 1;
  Reset();
  for (UINT col = 0; col < columns.size(); ++col) SetColWidth(col, columns[col].width);
  SetHeaderHeight(kHeaderHeight);
  SetFontSize(kFontSize);
}

void CGridWnd::GetStyleRowCol(UINT row, UINT col, CGXStyle& style) const {
  const std::span<const CColumn> columns = ModeOf(m_mode).columns;
  if (col >= columns.size()) return;
  const CColumn& column = columns[col];
  style.text = row == 0 ? CString(column.head) : (this->*column.text)(static_cast<int>(row) - 1);
}

CString CGridWnd::NameText(int index) const {
  return Holds(m_pNames, index) ? (*m_pNames)[index] : CString();
}

CString CGridWnd::ValueText(int index) const {
  CString text;
  if (Holds(m_pValues, index)) text.Format(m_format, static_cast<double>((*m_pValues)[index]));
  return text;
}

}  // namespace vastra
