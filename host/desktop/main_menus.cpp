// The menus, the tool bar and the status bar of the main window.
#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QStatusBar>
#include <QToolBar>

#include "host/desktop/condition_icon.h"
#include "host/desktop/help_window.h"
#include "host/desktop/main_window.h"

namespace vastra {
namespace {

// Makes the keys of menu work in the other windows, too.
void UseKeysEverywhere(const QMenu& menu) {
  for (QAction* action : menu.actions()) action->setShortcutContext(Qt::ApplicationShortcut);
}

}  // namespace

QAction* CMainWindow::AddAction(QMenu* menu, const char* text, const QKeySequence& key,
                                std::function<void()> action) {
  QAction* added = menu->addAction(text);
  added->setShortcut(key);
  connect(added, &QAction::triggered, this, std::move(action));
  return added;
}

void CMainWindow::MakeActions() {
  MakeFileMenu();
  MakeRunMenu();
  MakeWindowMenu();
  QMenu* help = menuBar()->addMenu("&Help");
  AddAction(help, "&Guide", {}, [this] { m_help->Show(nullptr); });
  QAction* here = AddAction(help, "This &Window", QKeySequence(Qt::Key_F1),
                            [this] { m_help->Show(QApplication::activeWindow()); });
  here->setShortcutContext(Qt::ApplicationShortcut);
  help->addSeparator();
  AddAction(help, "&About Vastra", {}, [this] { ShowAbout(); });
}

void CMainWindow::MakeFileMenu() {
  QMenu* file = menuBar()->addMenu("&File");
  m_new = AddAction(file, "&New", QKeySequence::New, [this] { New(); });
  m_newLogger = AddAction(file, "New &Logger...", QKeySequence("Ctrl+Shift+N"), [this] { NewLogger(); });
  m_open = AddAction(file, "&Open...", QKeySequence::Open, [this] { AskToOpen(); });
  m_recent = file->addMenu("Open &Recent");
  connect(m_recent, &QMenu::aboutToShow, this, [this] { ShowRecent(); });
  m_needDocument << AddAction(file, "&Save", QKeySequence::Save, [this] { Save(); })
                 << AddAction(file, "Save &As...", QKeySequence("Ctrl+Shift+S"), [this] { AskToSave(); });
  file->addSeparator();
  m_edit = AddAction(file, "&Configuration...", QKeySequence("Ctrl+E"), [this] { EditConfiguration(); });
  m_needDocument << m_edit << AddAction(file, "Re&port", QKeySequence("Ctrl+R"), [this] { ShowReport(); });
  file->addSeparator();
  AddAction(file, "Open &Logs...", QKeySequence("Ctrl+L"), [this] { m_charts.AskForLogs(); });
  AddAction(file, "Open Log &Folder...", QKeySequence("Ctrl+Shift+L"), [this] { m_charts.AskForFolder(); });
  file->addSeparator();
  AddAction(file, "&Attach...", QKeySequence("Ctrl+T"), [this] { Attach(); });
  file->addSeparator();
  AddAction(file, "&Quit", QKeySequence("Ctrl+Q"), [this] { close(); });
}

void CMainWindow::MakeRunMenu() {
  QMenu* run = menuBar()->addMenu("&Run");
  m_start = AddAction(run, "&Start", QKeySequence("F5"), [this] { StartRun(true); });
  m_stop = AddAction(run, "S&top", QKeySequence("Shift+F5"), [this] { m_runner.Stop(); });
  m_needDocument << AddAction(run, "&Check", QKeySequence("Ctrl+Shift+K"), [this] { Check(); });
  UseKeysEverywhere(*run);
  run->addSeparator();
  run->setToolTipsVisible(true);
  m_keepLogs = run->addAction("&Keep Logs After Faults");
  m_keepLogs->setToolTip("Journal the samples, replace no log, try again when the disk is full");
  m_keepLogs->setCheckable(true);
  m_keepLogs->setChecked(m_settings.Get(kPlainLogs).IsEmpty());
  connect(m_keepLogs, &QAction::toggled, this, [this](bool keep) { SetKeepLogs(keep); });
  m_replayWrites = run->addAction("Replay &Writes to PLCs");
  m_replayWrites->setToolTip("Let the next start of a replay write to the PLCs of the configuration");
  m_replayWrites->setCheckable(true);
  m_start->setIcon(StartIcon());
  m_stop->setIcon(StopIcon());
}

void CMainWindow::MakeWindowMenu() {
  QMenu* window = menuBar()->addMenu("&Window");
  QAction* trend = AddAction(window, "&Trend", QKeySequence("Ctrl+1"), [this] { ShowTrend(); });
  QAction* grid = AddAction(window, "Scan &Grid", QKeySequence("Ctrl+2"), [this] { ShowGrid(); });
  QAction* messages = AddAction(window, "&Messages", QKeySequence("Ctrl+3"), [this] { m_messages.Show(); });
  AddAction(window, "Message &Log", QKeySequence("Ctrl+4"), [this] { ShowMessageLog(); });
  QAction* values = AddAction(window, "&Values", QKeySequence("Ctrl+5"), [this] { m_values.BringUp(); });
  QAction* chart = AddAction(window, "&Chart", QKeySequence("Ctrl+6"), [this] { ShowChart(); });
  QAction* equations =
      AddAction(window, "&Equation Editor", QKeySequence("Ctrl+7"), [this] { ShowEquations(""); });
  window->addSeparator();
  AddAction(window, "Message &Settings...", QKeySequence("Ctrl+M"), [this] { m_messages.Configure(); });
  m_colours.AddTo(*window);
  UseKeysEverywhere(*window);
  m_needDocument << trend << grid << values << chart << equations;
  QToolBar* bar = addToolBar("Run");
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  bar->addAction(m_edit);
  bar->addSeparator();
  bar->addActions({m_start, m_stop});
  bar->addSeparator();
  bar->addActions({trend, grid, chart, messages});
}

void CMainWindow::ShowMessageLog() {
  m_messages.ShowLog([this](const CString& part) { OpenPlace(part); });
}

void CMainWindow::MakeStatusBar() {
  m_stateText = new QLabel(this);
  m_countsText = new QLabel(this);
  m_progress = new QProgressBar(this);
  m_progress->setMaximumWidth(fontMetrics().averageCharWidth() * 30);
  m_progress->hide();
  statusBar()->addWidget(m_stateText);
  statusBar()->addWidget(m_countsText, 1);
  statusBar()->addPermanentWidget(m_progress);
}

}  // namespace vastra
