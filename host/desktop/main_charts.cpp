// Charts of the main window, and what is dropped on it.
#include <QDropEvent>
#include <QMimeData>
#include <QTimer>

#include <algorithm>

#include "host/common/paths.h"
#include "host/desktop/main_window.h"
#include "vastra/ui/dropped_paths.h"

namespace vastra {
namespace {

// Whether they are for a chart.
bool AreLogs(const std::vector<CString>& paths) {
  return !paths.empty() && std::ranges::all_of(paths, IsChartPath);
}

bool IsOneFile(const std::vector<CString>& paths) {
  return paths.size() == 1 && OtherThanFile(paths.front()).IsEmpty();
}

}  // namespace

void CMainWindow::ShowChart() {
  if (m_document.IsOpen()) m_charts.ShowLogger();
}

// Of the run, which can have other parts than the sheet.
void CMainWindow::ShowHistory(EPart part, int index) {
  m_charts.ShowHistory(m_runner.Run().Configuration(), part, index);
}

// The last chart was closed, and the program was started for charts alone.
void CMainWindow::QuitIfHidden() {
  if (!isVisible() && !m_quitWanted) StopAndQuit();
}

// A configuration that is dropped on the window is opened, as from the menu; logs and folders get a chart.
void CMainWindow::dragEnterEvent(QDragEnterEvent* event) {
  const std::vector<CString> paths = DroppedPaths(*event->mimeData());
  if (AreLogs(paths) || (m_open->isEnabled() && IsOneFile(paths))) event->acceptProposedAction();
}

void CMainWindow::dropEvent(QDropEvent* event) {
  const std::vector<CString> paths = DroppedPaths(*event->mimeData());
  event->acceptProposedAction();
  if (AreLogs(paths)) return OpenLogs(paths);
  if (!IsOneFile(paths)) return;
  // The program that the file comes from waits for the end of the drop, and a question can last long.
  QTimer::singleShot(0, this, [this, path = paths.front()] {
    if (m_open->isEnabled() && !HasOpenDialog() && MayLoseChanges()) Open(path);
  });
}

}  // namespace vastra
