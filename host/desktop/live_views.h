// CLiveViews: the trend window and the scan grid of the desktop, at most one of each.
#pragma once

#include <optional>

#include "host/desktop/settings.h"
#include "vastra/stages/log_input.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {

class CTrendingDlg;
class CVarScanDlg;

// The stages that the views look at.
struct CViewStages {
  CLogInput& input;
  CLogTrendings& trend;
};

class CLiveViews {
 public:
  // areAttached: to a logger of another process; the places are apart then, and nothing of the stages can be
  // changed.
  explicit CLiveViews(CSettings& settings, bool areAttached = false)
      : m_settings(settings), m_areAttached(areAttached) {}
  ~CLiveViews() { Close(); }
  CLiveViews(const CLiveViews&) = delete;
  CLiveViews& operator=(const CLiveViews&) = delete;

  // Brings the window to the front, or opens it on stages. refreshPeriod: milliseconds.
  void ShowTrend(CViewStages stages, UINT refreshPeriod);
  void ShowGrid(CViewStages stages);

  // Place and selection of an open window as a string; none: it is not open.
  std::optional<CString> TrendState() const;
  std::optional<CString> GridState() const;
  // Open a window with such a state. Return the message about a selection that is not possible any more.
  CString OpenTrend(CViewStages stages, UINT refreshPeriod, const CString& state);
  CString OpenGrid(CViewStages stages, const CString& state);
  void CloseTrend();
  void CloseGrid();

  // Connects the open windows to other stages.
  void TakeStages(CViewStages stages, UINT refreshPeriod);
  // Called when the names of the stages may have changed.
  void ResetNames();
  void Refresh();
  void Enable(bool on);  // lets the user work in the windows, or not
  // Saves the places of the open windows, where they open again. Called a few times a second.
  void NotePlaces();
  void Close();  // saves the places in the settings

 private:
  CString KeyOf(const char* place) const;

  CSettings& m_settings;
  const bool m_areAttached;
  CTrendingDlg* m_pTrend = nullptr;  // a window sets its pointer to null when it is destroyed
  CVarScanDlg* m_pGrid = nullptr;
  CRect m_trendPlace, m_gridPlace;  // empty: not opened yet
};

}  // namespace vastra
