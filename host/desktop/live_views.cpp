#include "host/desktop/live_views.h"

#include <QWidget>

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
