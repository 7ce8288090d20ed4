// CChartWindows: the charts of the desktop: one of the logger, and any number over logs that the user opens.
#pragma once

#include <QPointer>
#include <QTimer>

#include <functional>

#include "host/common/configuration.h"
#include "host/desktop/away_times.h"
#include "host/desktop/plant_parts.h"
#include "host/desktop/settings.h"
#include "host/run/live_state.h"
#include "vastra/charts/chart_window.h"

namespace vastra {

// A logger, as a chart shows it.
struct CChartLogger {
  CString title;  // of its window; empty: the usual one
  CChartSources sources;
  std::vector<CListedNode> nodes;
  std::map<CString, CString> units, comments;
  std::shared_ptr<const CLiveState> state;  // of its nodes; can be null
};
// With what the configuration says: the folders of the logs, the nodes and the notes.
CChartLogger ChartLoggerOf(const CConfiguration& configuration, std::shared_ptr<const CLiveSamples> samples,
                           std::shared_ptr<const CLiveState> state);

class CChartWindows {
 public:
  // closed: the last window over opened logs was closed.
  CChartWindows(CSettings& settings, std::function<void()> closed);
  ~CChartWindows();
  CChartWindows(const CChartWindows&) = delete;
  CChartWindows& operator=(const CChartWindows&) = delete;

  // The logger that ShowLogger and ShowHistory are about.
  void SetLogger(CChartLogger logger);
  void SetRunning(bool isRunning);
  // Forgets the curves of the former logger, and closes its window.
  void Leave();
  void ShowLogger();
  // The chart of the logger; null before it was opened.
  CChartWindow* LoggerWindow() { return m_window; }
  // A chart of the logs of an output or summary: that at index in configuration, of part.
  void ShowHistory(const CConfiguration& configuration, EPart part, int index);
  // A chart of logs, journals and folders.
  void OpenPaths(const std::vector<CString>& paths);
  void AskForLogs();
  void AskForFolder();

 private:
  void UseLogger(CChartWindow& window, CChartSources sources);
  void ShowLoggerIn(CChartWindow& window);
  void LookAtNodes();
  CChartWindow* NewWindow(const QString& title);
  void ShowHistory(const CString& name, std::vector<CChartPath> paths, const CStringArray& variables);

  CSettings& m_settings;
  const std::function<void()> m_closed;
  CChartLogger m_logger;
  bool m_isRunning = false;
  CLiveNewest m_newest;  // keeps its memory
  CAwayTimes m_away;
  QTimer m_look;
  QPointer<CChartWindow> m_window;       // of the logger
  std::vector<CChartWindow*> m_windows;  // the others; a window removes itself when it is destroyed
};

// Whether path is for a chart: a folder, or the name of a log or journal.
bool IsChartPath(const CString& path);

}  // namespace vastra
