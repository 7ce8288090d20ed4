// CLiveViews: the trend window and the scan grid of the desktop, each there once or not at all.
#pragma once

#include "host/run/run.h"
#include "host/desktop/settings.h"

namespace vastra {

class CTrendingDlg;
class CVarScanDlg;

class CLiveViews {
 public:
  explicit CLiveViews(CSettings& settings) : m_settings(settings) {}
  ~CLiveViews() { Close(); }
  CLiveViews(const CLiveViews&) = delete;
  CLiveViews& operator=(const CLiveViews&) = delete;

  // Brings the window to the front, or makes it: on the stages of run, with a refresh each so many
  // milliseconds.
  void ShowTrend(CRun& run, UINT refreshPeriod);
  void ShowGrid(CRun& run);

  // Open windows change over to the stages of another run.
  void TakeRun(CRun& run, UINT refreshPeriod);
  // The names of the stages may have changed.
  void ResetNames();
  void Refresh();
  void Enable(bool on);  // for the user
  // Where the windows are now: a view that the user closes comes back there. Called some times a second.
  void NotePlaces();
  void Close();  // the places go to the settings

 private:
  CSettings& m_settings;
  CTrendingDlg* m_pTrend = nullptr;  // the windows set them to null when they go
  CVarScanDlg* m_pGrid = nullptr;
  CRect m_trendPlace, m_gridPlace;  // empty: not open in this run
};

}  // namespace vastra
