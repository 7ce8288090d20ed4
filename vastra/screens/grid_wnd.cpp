#include "vastra/screens/grid_wnd.h"

#include <cstdlib>
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

// A column; the first one is the header column. width: pixels. text: of the cell in the row of index.
struct CGridWnd::CColumn {
  const char* head;
  int width;
  CString (CGridWnd::*text)(int index) const;
  CGXStyle::EControl control = CGXStyle::fixed;
};

struct CGridWnd::CMode {
  const char* format;  // of a number
  std::span<const CColumn> columns;
};

const CGridWnd::CMode& CGridWnd::ModeOf(int mode) {
  static constexpr CColumn kScan[] = {{"Variables", 100, &CGridWnd::NameText},
                                      {"Values", 85, &CGridWnd::ValueText}};
  static constexpr CColumn kScaler[] = {{"Variables", 91, &CGridWnd::NameText},
                                        {"Scales", 79, &CGridWnd::ScaleText, CGXStyle::edit},
                                        {"Min. Val.", 79, &CGridWnd::MinimumText, CGXStyle::edit},
                                        {"Max. Val.", 79, &CGridWnd::MaximumText, CGXStyle::edit},
                                        {"Clamp", 50, &CGridWnd::ClampText, CGXStyle::checkBox}};
  static constexpr CMode kModes[] = {{"%.2f", {}}, {"%.2f", kScan}, {"%.4f", kScaler}};
  return kModes[mode];
}

void CGridWnd::InitGrid(const CStringArray* names, const CArray<float, float>* values) {
  m_pNames = names;
  m_pValues = values;
  Init(scan, kScanRows);
}

void CGridWnd::InitGridScaler(const CStringArray* names, CArray<float, float>* scales,
                              CArray<float, float>* minimums, CArray<float, float>* maximums,
                              CArray<int, int>* clamps) {
  m_pNames = names;
  m_pScales = scales;
  m_pMinimums = minimums;
  m_pMaximums = maximums;
  m_pClamps = clamps;
  Init(scaler, static_cast<UINT>(names->GetSize()));
  SetReadOnly(false);
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
  if (row == 0) {
    style.text = column.head;
    return;
  }
  style.text = (this->*column.text)(static_cast<int>(row) - 1);
  if (!style.text.IsEmpty()) style.control = column.control;
}

CString CGridWnd::NameText(int index) const {
  return Holds(m_pNames, index) ? (*m_pNames)[index] : CString();
}

CString CGridWnd::NumberText(const CArray<float, float>* numbers, int index) const {
  CString text;
  if (Holds(numbers, index)) text.Format(m_format, static_cast<double>((*numbers)[index]));
  return text;
}

CString CGridWnd::ClampText(int index) const {
  if (!Holds(m_pClamps, index)) return "";
  return (*m_pClamps)[index] == 1 ? "1" : "0";
}

// A text that is not a number counts as 0.
bool CGridWnd::OnValidateCell(UINT row, UINT col) {
  CArray<float, float>* const numbers[] = {m_pScales, m_pMinimums, m_pMaximums};
  (*numbers[col - 1])[static_cast<int>(row) - 1] = static_cast<float>(std::atof(GetCurrentText()));
  return true;
}

void CGridWnd::OnClickedButtonRowCol(UINT row, UINT /*col*/) {
  (*m_pClamps)[static_cast<int>(row) - 1] = GetCurrentText() == "1";
}

}  // namespace vastra
