// CLiveViews: the trend window and the scan grid of the desktop, at most one of each.
#pragma once

#include "host/desktop/settings.h"
#include "host/run/run.h"

namespace vastra {

class CTrendingDlg;
class CVarScanDlg;

class CLiveViews {
 public:
  explicit CLiveViews(CSettings& settings) : m_settings(settings) {}
  ~CLiveViews() { Close(); }
  CLiveViews(const CLiveViews&) = delete;
  CLiveViews& operator=(const CLiveViews&) = delete;

  // Brings the window to the front, or opens it on the stages of run. refreshPeriod: milliseconds.
  void ShowTrend(CRun& run, UINT refreshPeriod);
  void ShowGrid(CRun& run);

  // Connects the open windows to the stages of another run.
  void TakeRun(CRun& run, UINT refreshPeriod);
  // Called when the names of the stages may have changed.
  void ResetNames();
  void Refresh();
  void Enable(bool on);  // lets the user work in the windows, or not
  // Saves the places of the open windows, where they open again. Called a few times a second.
  void NotePlaces();
  void Close();  // saves the places in the settings

 private:
  CSettings& m_settings;
  CTrendingDlg* m_pTrend = nullptr;  // a window sets its pointer to null when it is destroyed
  CVarScanDlg* m_pGrid = nullptr;
  CRect m_trendPlace, m_gridPlace;  // empty: not opened yet
};

}  // namespace vastra
