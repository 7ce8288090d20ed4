#include "host/desktop/live_views.h"

#include <QJsonArray>
#include <QWidget>

#include "host/desktop/live_selection.h"
#include "host/desktop/workspace.h"
#include "vastra/ui/text.h"
#include "vastra/views/trending_dlg.h"
#include "vastra/views/var_scan_dlg.h"

namespace vastra {
namespace {

constexpr const char* kTrendPlace = "TrendPlace";
constexpr const char* kGridPlace = "GridPlace";

// Makes view a window of its own. As a child of the main window it would be minimised with it by some
// desktops.
void StandAlone(CWnd& view) {
  QWidget* widget = view.Widget();
  widget->setParent(nullptr, (widget->windowFlags() & ~Qt::WindowType_Mask) | Qt::Window);
}

// The state of a view as a string, and back.
CString ViewState(const CWnd& view) {
  const CRect place = view.GetNormalPlace();
  const QJsonArray numbers = {place.left, place.top, place.Width(), place.Height()};
  return StateText({{"place", numbers}, {"selection", ToScreen(SelectionOf(view))}});
}

// Empty: the state has none.
CRect PlaceIn(const CString& state) {
  const QJsonArray numbers = StateFields(state)["place"].toArray();
  if (numbers.size() != 4) return {};
  return CRect::Of({numbers[0].toInt(), numbers[1].toInt()}, {numbers[2].toInt(), numbers[3].toInt()});
}

CString SelectionIn(const CString& state) { return FromScreen(StateFields(state)["selection"].toString()); }

void BringUp(CWnd& window) { window.ShowWindow(window.IsIconic() ? SW_RESTORE : SW_SHOW); }

}  // namespace

void CLiveViews::ShowTrend(CViewStages stages, UINT refreshPeriod) {
  if (m_pTrend) return BringUp(*m_pTrend);
  m_pTrend = new CTrendingDlg;
  m_pTrend->SetInputPointers(&stages.input, &stages.trend, &m_pTrend);
  m_pTrend->SetGridPointer(&m_pGrid);
  m_pTrend->SetTimeScan(refreshPeriod);
  if (!m_pTrend->Create()) return;
  if (m_areAttached) m_pTrend->ForbidChanges();
  StandAlone(*m_pTrend);
  CRect place = m_trendPlace;
  if (!place.IsEmpty() || m_settings.GetPlace(KeyOf(kTrendPlace), place)) m_pTrend->MoveWindow(place);
  m_pTrend->ShowWindow(SW_SHOW);
}

void CLiveViews::ShowGrid(CViewStages stages) {
  if (m_pGrid) return BringUp(*m_pGrid);
  m_pGrid = new CVarScanDlg;
  m_pGrid->SetInputPointers(&stages.input, &stages.trend, &m_pGrid);
  m_pGrid->SetTrendPointer(&m_pTrend);
  if (!m_pGrid->Create()) return;
  if (m_areAttached) m_pGrid->ForbidChanges();
  StandAlone(*m_pGrid);
  CRect place = m_gridPlace;
  if (!place.IsEmpty() || m_settings.GetPlace(KeyOf(kGridPlace), place))
    m_pGrid->MoveWindow(CRect::Of(place.TopLeft(), m_pGrid->GetNormalPlace().Size()));
  m_pGrid->ShowWindow(SW_SHOW);
}

std::optional<CString> CLiveViews::TrendState() const {
  return m_pTrend ? std::optional(ViewState(*m_pTrend)) : std::nullopt;
}

std::optional<CString> CLiveViews::GridState() const {
  return m_pGrid ? std::optional(ViewState(*m_pGrid)) : std::nullopt;
}

CString CLiveViews::OpenTrend(CViewStages stages, UINT refreshPeriod, const CString& state) {
  CloseTrend();
  m_trendPlace = PlaceIn(state);
  ShowTrend(stages, refreshPeriod);
  return m_pTrend ? Select(*m_pTrend, SelectionIn(state)) : CString();
}

CString CLiveViews::OpenGrid(CViewStages stages, const CString& state) {
  CloseGrid();
  m_gridPlace = PlaceIn(state);
  ShowGrid(stages);
  return m_pGrid ? Select(*m_pGrid, SelectionIn(state)) : CString();
}

void CLiveViews::CloseTrend() {
  NotePlaces();
  if (m_pTrend) m_pTrend->DestroyWindow();
}

void CLiveViews::CloseGrid() {
  NotePlaces();
  if (m_pGrid) m_pGrid->DestroyWindow();
}

CString CLiveViews::KeyOf(const char* place) const {
  return CString(m_areAttached ? "Attached" : "") + place;
}

void CLiveViews::TakeStages(CViewStages stages, UINT refreshPeriod) {
  if (m_pTrend) {
    m_pTrend->SetInputPointers(&stages.input, &stages.trend, &m_pTrend);
    m_pTrend->RefreshTimeScan(refreshPeriod);
  }
  if (m_pGrid) m_pGrid->SetInputPointers(&stages.input, &stages.trend, &m_pGrid);
  ResetNames();
}

void CLiveViews::ResetNames() {
  if (m_pTrend) m_pTrend->ResetVarNames();
  if (m_pGrid) m_pGrid->ResetVarNames();
}

void CLiveViews::Refresh() {
  if (m_pTrend) m_pTrend->Refresh();
  if (m_pGrid) m_pGrid->Refresh();
}

void CLiveViews::Enable(bool on) {
  if (m_pTrend) m_pTrend->EnableWindow(on);
  if (m_pGrid) m_pGrid->EnableWindow(on);
}

void CLiveViews::NotePlaces() {
  if (m_pTrend) m_trendPlace = m_pTrend->GetNormalPlace();
  if (m_pGrid) m_gridPlace = m_pGrid->GetNormalPlace();
}

void CLiveViews::Close() {
  NotePlaces();
  if (!m_trendPlace.IsEmpty()) m_settings.SetPlace(KeyOf(kTrendPlace), m_trendPlace);
  if (!m_gridPlace.IsEmpty()) m_settings.SetPlace(KeyOf(kGridPlace), m_gridPlace);
  if (m_pTrend) m_pTrend->DestroyWindow();
  if (m_pGrid) m_pGrid->DestroyWindow();
}

}  // namespace vastra
