#include "vastra/views/var_scan_dlg.h"

#include "vastra/views/trending_dlg.h"

namespace vastra {
namespace {

constexpr const char* kGrid = "Values";
constexpr CControl kVarScanControls[] = {
    {CControl::grid, kGrid, {7, 7, 124, 313}},        {CControl::button, "Config", {137, 200, 50, 14}},
    {CControl::button, "Edit", {137, 223, 50, 14}},   {CControl::button, "Freeze", {137, 239, 50, 14}},
    {CControl::button, "Load", {137, 262, 50, 14}},   {CControl::button, "Save", {137, 278, 50, 14}},
    {CControl::button, "Cancel", {137, 301, 50, 14}},
};
constexpr CDialogTemplate kVarScanTemplate = {
    "Scan Screen", {194, 327}, kVarScanControls, CDialogTemplate::minimizeBox};
constexpr CLiveViewKind kVarScanKind = {30, "Some variables had to be removed from the grid.", "grd", "Grid",
                                        "Grid Files (*.grd)|*.grd|All Files (*.*)|*.*||"};

}  // namespace

CVarScanDlg::CVarScanDlg() : CLiveView(kVarScanTemplate, kVarScanKind) {}

void CVarScanDlg::SetInputPointers(CLogInput* input, CLogTrendings* trendings, CVarScanDlg** self) {
  m_pInput = input;
  m_pTrendings = trendings;
  m_ppSelf = self;
}

CLiveView* CVarScanDlg::Sibling() const { return m_ppTrend ? *m_ppTrend : nullptr; }

void CVarScanDlg::OnInitDialog() {
  m_grid.SubclassDlgItem(*this, kGrid);
  m_grid.InitGrid(&m_selected, &m_values);
  if (!m_pTrendings || !m_pInput) {
    Tell("Incorrect initialization.");
    EndDialog(IDCANCEL);
    return;
  }
  OnButton("Config", [this] { Configure(); });
  OnButton("Edit", [this] { OnEditVars(); });
  OnButton("Freeze", [this] { ToggleFreeze(); });
  OnButton("Load", [this] { OnLoadGrid(); });
  OnButton("Save", [this] { OnSaveGrid(); });
  ResetVarNames();
}

void CVarScanDlg::PostNcDestroy() {
  if (m_ppSelf) *m_ppSelf = nullptr;
  CLiveView::PostNcDestroy();
}

void CVarScanDlg::OnIndexed() {
  m_values.RemoveAll();
  m_values.SetSize(m_selected.GetSize());
}

void CVarScanDlg::Refresh() {
  if (!m_ready) return;
  EachValue([this](int row, float value) {
    if (row < m_values.GetSize()) m_values[row] = value;
  });
  if (!m_frozen) m_grid.Redraw();
}

void CVarScanDlg::OnEditVars() {
  if (!EditSelection()) return;
  CalcVarIndex();
  Refresh();
}

void CVarScanDlg::OnLoadGrid() {
  CString path;
  if (!AskFile(false, path)) return;
  const ESelectionFile result = ReadSelection(path, m_selected);
  Tell(TextOf(result));
  if (result != ESelectionFile::good) return;
  CalcVarIndex();
  Refresh();
}

void CVarScanDlg::OnSaveGrid() {
  CString path;
  if (AskFile(true, path)) Tell(TextOf(WriteSelection(path, m_selected)));
}

}  // namespace vastra
