#include "vastra/views/trending_dlg.h"

#include <algorithm>
#include <utility>

#include "vastra/platform/chooser.h"
#include "vastra/stages/log_trendings.h"
#include "vastra/views/simple_color.h"
#include "vastra/views/var_scan_dlg.h"

namespace vastra {
namespace {

constexpr const char* kLegend = "Legend";
constexpr const char* kPlot = "Trends";
constexpr const char* kVertScale = "Vertical scale";
constexpr const char* kHorizScale = "Horizontal scale";
constexpr CControl kTrendingControls[] = {
    {CControl::frame, kLegend, {348, 9, 72, 179}},    {CControl::frame, kPlot, {11, 9, 287, 223}},
    {CControl::area, kVertScale, {301, 9, 35, 222}},  {CControl::area, kHorizScale, {12, 235, 286, 30}},
    {CControl::button, "Edit", {348, 190, 34, 15}},   {CControl::button, "Config", {386, 190, 33, 15}},
    {CControl::button, "Freeze", {348, 209, 71, 15}}, {CControl::button, "Load", {348, 229, 34, 15}},
    {CControl::button, "Save", {386, 229, 33, 15}},   {CControl::button, "Cancel", {348, 248, 71, 15}},
};
constexpr CDialogTemplate kTrendingTemplate = {
    "Trending", {432, 270}, kTrendingControls, CDialogTemplate::resizable};
constexpr CLiveViewKind kTrendingKind = {20, "Some variables had to be removed from the trending.", "trn",
                                         "Trend", "Trending Files (*.trn)|*.trn|All Files (*.*)|*.*||"};

constexpr UINT kLegendRows = 20;
constexpr int kTrendingEdge = 2;  // of the frame of the plot, which contains the picture

}  // namespace

IMPLEMENT_DYNCREATE(CTrendingDlg, CDialog)

CTrendingDlg::CTrendingDlg() : CLiveView(kTrendingTemplate, kTrendingKind) {}

CTrendingDlg::~CTrendingDlg() { DeleteVarsArray(); }

void CTrendingDlg::SetInputPointers(CLogInput* input, CLogTrendings* trendings, CTrendingDlg** self) {
  m_pInput = input;
  m_pTrendings = trendings;
  m_ppSelf = self;
}

CLiveView* CTrendingDlg::Sibling() const { return m_ppGrid ? *m_ppGrid : nullptr; }

void CTrendingDlg::OnInitDialog() {
  if (!m_pInput || !m_pTrendings || !m_ppSelf) {
    Tell("Incorrect initialization.");
    EndDialog(IDCANCEL);
    return;
  }
  m_horizScale.SetValues(m_timeScan, kTrendPoints);
  TakePlaces();
  if (!CreatePicture()) {
    Tell("Not enough memory.");
    EndDialog(IDCANCEL);
    return;
  }
  SetMinTrackSize(kTrendMinSize);
  OnButton("Edit", [this] { OnEditTrendingVars(); });
  OnButton("Config", [this] { Configure(); });
  OnButton("Freeze", [this] { OnFreezeTrending(); });
  OnButton("Load", [this] { OnReadButton(); });
  OnButton("Save", [this] { OnWriteButton(); });
  m_isOpen = true;
  ResetVarNames();
}

void CTrendingDlg::PostNcDestroy() {
  m_picture.DeleteObject();
  DeleteVarsArray();
  if (m_ppSelf) *m_ppSelf = nullptr;
  CLiveView::PostNcDestroy();
}

// Places the painted parts in the frames of the dialog.
void CTrendingDlg::TakePlaces() {
  m_plot = Place(kPlot).GetPlace();
  m_legend.SetValues(Place(kLegend).GetPlace(), kLegendRows);
  m_vertScale.SetArea(Place(kVertScale).GetPlace());
  m_horizScale.SetArea(Place(kHorizScale).GetPlace());
}

int CTrendingDlg::CreatePicture() {
  return m_picture.CreateCompatibleBitmap(
      *this, {m_plot.Width() - 2 * kTrendingEdge, m_plot.Height() - 2 * kTrendingEdge});
}

void CTrendingDlg::OnSize(int cx, int cy) {
  if (!m_isOpen || IsIconic()) return;
  CRect frame = GetFrameRect();
  frame.top = std::min(frame.top, -kTrendCaption);
  const CTrendLayout layout = LayOutTrend({cx, cy}, frame);
  const std::pair<CWnd&, const CRect&> places[] = {
      {Place(kLegend), layout.legend},       {Place(kPlot), layout.plot},
      {Place(kVertScale), layout.vertScale}, {Place(kHorizScale), layout.horizScale},
      {Button("Edit"), layout.edit},         {Button("Config"), layout.config},
      {Button("Freeze"), layout.freeze},     {Button("Load"), layout.load},
      {Button("Save"), layout.save},         {Button("Cancel"), layout.cancel},
  };
  for (const auto& [window, place] : places) window.MoveWindow(place);
  TakePlaces();
  if (CreatePicture()) Invalidate();
}

// The picture is smaller than the frame: points on the right and lower edge of the frame are clipped.
void CTrendingDlg::DrawTrendings(CDC& dc) const { DrawCurves(dc, m_vars, m_plot.Size()); }

void CTrendingDlg::DrawPicture() {
  if (!m_picture.IsCreated()) return;
  CDC dc(m_picture);
  DrawTrendings(dc);
}

bool CTrendingDlg::OnPaint(const CRect& dirty) {
  if (!m_pictureIsNew && dirty.Meets(m_plot)) DrawPicture();
  CDC dc(*this);
  if (dirty.Meets(m_legend.Frame())) m_legend.Paint(dc, m_vars);
  if (dirty.Meets(m_vertScale.Reach())) m_vertScale.Paint(dc);
  if (dirty.Meets(m_horizScale.Reach())) m_horizScale.Paint(dc);
  dc.BitBlt({m_plot.left + kTrendingEdge, m_plot.top + kTrendingEdge}, m_picture);
  return true;
}

void CTrendingDlg::Refresh() {
  if (!m_ready) return;
  EachValue([this](int item, float value) {
    if (CVariable* variable = VariableAt(item)) variable->AddPoint(value);
  });
  if (m_frozen || !IsWindowVisible()) return;
  DrawPicture();
  m_pictureIsNew = true;
  InvalidateRect(CRect::Of({m_plot.left + kTrendingEdge, m_plot.top + kTrendingEdge}, m_picture.Size()));
  UpdateWindow();
  m_pictureIsNew = false;
}

void CTrendingDlg::RefreshTimeScan(UINT timeScan) {
  m_timeScan = timeScan;
  m_horizScale.SetValues(timeScan, kTrendPoints);
  CleanVarsArray();
  Invalidate();
}

// After a file that ended too early the selected names can differ from the curves.
void CTrendingDlg::OnNamesReset() {
  if (CurvesAreSelected()) return;
  CreateVariables();
  Invalidate();
}

bool CTrendingDlg::CurvesAreSelected() const {
  if (m_vars.GetSize() != m_selected.GetSize()) return false;
  for (int i = 0; i < m_vars.GetSize(); ++i)
    if (!(m_vars[i]->m_name == m_selected[i])) return false;
  return true;
}

// Makes the curves of a new selection. A variable keeps its scale; colours and points start again.
void CTrendingDlg::CreateVariables() {
  CVariableArray variables;
  UINT position = CSimpleColor::GetFirstPosition();
  for (int i = 0; i < m_selected.GetSize(); ++i) {
    auto* variable = new CVariable;
    variables.Add(variable);
    variable->m_name = m_selected[i];
    variable->m_color = CSimpleColor::GetNextColor(position);
    if (const CVariable* former = VariableOf(variable->m_name))
      variable->SetScale(former->Scale());
    else
      CalcScales(i, *variable);
  }
  TakeVariables(variables);
}

// Sets the scale by the present value of variable. place: in m_index.
void CTrendingDlg::CalcScales(int place, CVariable& variable) {
  if (place >= m_index.GetSize() || !ReadSample()) return;
  const UINT at = m_index[place];
  if (at < static_cast<UINT>(m_sample.m_values.GetSize()))
    variable.SetScale(StartScale(static_cast<double>(m_sample.m_values[static_cast<int>(at)])));
}

void CTrendingDlg::TakeVariables(CVariableArray& variables) {
  DeleteVarsArray();
  std::swap(m_vars, variables);
  m_vertScale.SetVariable(VariableAt(0));
}

void CTrendingDlg::CleanVarsArray() {
  for (CVariable* variable : m_vars) variable->m_history.RemoveAll();
}

void CTrendingDlg::DeleteVarsArray() {
  m_vertScale.SetVariable(nullptr);
  for (const CVariable* variable : m_vars) delete variable;
  m_vars.RemoveAll();
}

CVariable* CTrendingDlg::VariableAt(int item, const CString* name) const {
  if (item < 0 || item >= m_vars.GetSize()) return nullptr;
  return !name || m_vars[item]->m_name == *name ? m_vars[item] : nullptr;
}

CVariable* CTrendingDlg::VariableOf(const CString& name) const {
  for (CVariable* variable : m_vars)
    if (variable->m_name == name) return variable;
  return nullptr;
}

int CTrendingDlg::ItemOf(const CVariable* variable) const {
  for (int i = 0; i < m_vars.GetSize(); ++i)
    if (m_vars[i] == variable) return i;
  return -1;
}

void CTrendingDlg::SelectVariable(int item) {
  CVariable* variable = VariableAt(item);
  if (!variable || variable == m_vertScale.GetVariable()) return;
  m_vertScale.SetVariable(variable);
  Invalidate();
}

// The host can change the variables while the dialog is open, so the dialog works on a copy of the curve.
void CTrendingDlg::SetScale(int item) {
  const CVariable* variable = VariableAt(item);
  if (!variable) return;
  CVariable copy;
  copy.m_name = variable->m_name;
  copy.SetScale(variable->Scale());
  if (!copy.SetScale(this)) return;
  if (CVariable* now = VariableAt(item, &copy.m_name)) now->SetScale(copy.Scale());
  Invalidate();
}

void CTrendingDlg::OnColorPop() {
  const CVariable* variable = VariableAt(m_popupItem);
  if (!variable) return;
  const CString name = variable->m_name;
  COLORREF colour = variable->m_color;
  if (!ChooseColour(colour)) return;
  CVariable* now = VariableAt(m_popupItem, &name);
  if (!now || now->m_color == colour) return;
  now->m_color = colour;
  Invalidate();
}

bool CTrendingDlg::OnLButtonUp(CPoint point) {
  const int item = m_legend.ItemOnPoint(point);
  SelectVariable(item);
  return item >= 0;
}

bool CTrendingDlg::OnLButtonDblClk(CPoint point) {
  int item = m_legend.ItemOnPoint(point);
  if (item < 0 && m_vertScale.Area().PtInRect(point)) item = ItemOf(m_vertScale.GetVariable());
  SetScale(item);
  return item >= 0;
}

bool CTrendingDlg::OnRButtonDown(CPoint point) {
  const int item = m_legend.ItemOnPoint(point);
  if (item >= 0) ShowPopup(item, point);
  return item >= 0;
}

// Keys select a curve for the vertical scale and open its menu.
bool CTrendingDlg::OnKeyDown(UINT key) {
  const int item = ItemOf(m_vertScale.GetVariable());
  if (item < 0) return false;
  if (key == VK_APPS)
    ShowPopup(item, m_legend.Frame().TopLeft());
  else
    SelectVariable(key == VK_PRIOR ? item - 1 : item + 1);
  return true;
}

void CTrendingDlg::ShowPopup(int item, CPoint point) {
  m_popupItem = item;
  switch (TrackPopupMenu(*this, point, {"Select", "Set Scale", "Change Color"})) {
    case 0:
      OnSelectVarPop();
      break;
    case 1:
      OnSetScalePop();
      break;
    case 2:
      OnColorPop();
      break;
    default:
      break;
  }
}

void CTrendingDlg::OnEditTrendingVars() {
  if (!EditSelection()) return;
  CalcVarIndex();
  CreateVariables();
  Refresh();
  Invalidate();
}

void CTrendingDlg::OnFreezeTrending() {
  ToggleFreeze();
  if (!m_frozen) Invalidate(), UpdateWindow();
}

void CTrendingDlg::OnWriteButton() {
  CString path;
  if (!AskFile(true, path)) return;
  CTrendSelection selection;
  for (const CVariable* variable : m_vars)
    selection.curves.push_back({variable->m_name, variable->m_min, variable->m_max, variable->m_color});
  selection.scaleIndex = static_cast<UINT>(std::max(ItemOf(m_vertScale.GetVariable()), 0));
  Tell(TextOf(WriteSelection(path, selection)));
}

void CTrendingDlg::OnReadButton() {
  CString path;
  if (!AskFile(false, path)) return;
  CTrendSelection selection;
  const ESelectionFile result = ReadSelection(path, selection);
  if (result == ESelectionFile::good || result == ESelectionFile::endsInside) {
    m_selected.RemoveAll();
    for (const CCurveRecord& curve : selection.curves) m_selected.Add(curve.name);
  }
  Tell(TextOf(result));
  if (result == ESelectionFile::good) ShowSelection(selection);
}

// Replaces the curves by those of a file, with their colours and scales.
void CTrendingDlg::ShowSelection(const CTrendSelection& selection) {
  CVariableArray variables;
  for (const auto& [name, minimum, maximum, colour] : selection.curves) {
    auto* variable = new CVariable;
    variables.Add(variable);
    variable->m_name = name;
    variable->SetScale({minimum, maximum});
    variable->m_color = colour;
  }
  const int count = variables.GetSize();
  TakeVariables(variables);
  CalcVarIndex();
  if (m_vars.GetSize() == count && selection.scaleIndex < static_cast<UINT>(count))
    m_vertScale.SetVariable(m_vars[static_cast<int>(selection.scaleIndex)]);
  Invalidate();
}

}  // namespace vastra
