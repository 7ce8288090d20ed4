#include "host/desktop/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QProgressBar>
#include <QStatusBar>
#include <QTimer>

#include <algorithm>

#include "host/common/configuration_json.h"
#include "host/common/demo.h"
#include "host/common/paths.h"
#include "host/desktop/check_window.h"
#include "host/desktop/configuration_sheet.h"
#include "host/desktop/equation_editor.h"
#include "host/desktop/help_window.h"
#include "host/desktop/plant_view.h"
#include "host/desktop/report_window.h"
#include "vastra/platform/file_system.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr const char* kPlace = "MainPlace";
constexpr const char* kDemoOffered = "DemoOffered";

const char* NameOf(CRunner::EState state) {
  switch (state) {
    case CRunner::EState::stopped:
      return "Stopped";
    case CRunner::EState::starting:
      return "Starting";
    case CRunner::EState::running:
      return "Running";
    case CRunner::EState::stopping:
      return "Stopping";
  }
  return "";
}

}  // namespace

// An open dialog uses the stages: the user has to close it before they are replaced.
bool CMainWindow::HasOpenDialog() {
  QWidget* dialog = QApplication::activeModalWidget();
  if (!dialog) return false;
  QApplication::beep();
  dialog->raise();
  dialog->activateWindow();
  return true;
}

CMainWindow::CMainWindow()
    : m_messages(m_settings),
      m_runner({.changed = [this] { TakeState(); },
                .failed = [this] { ShowOpenFault(); },
                .refresh = [this] { m_views.Refresh(); },
                .tick = [this] { ShowCounts(); },
                .trend = [this] { TakeTrend(); },
                .message = [this](const CRunMessage& message) { m_messages.Keep(message); }},
               m_messages.Messenger()),
      m_views(m_settings),
      m_values(m_settings, "Values"),
      m_charts(m_settings, [this] { QuitIfHidden(); }),
      m_help(new CHelp(this)),
      m_plant(new CPlantView({.edit = [this](const CString& key) { OpenPlace(key); },
                              .trend = [this] { ShowTrend(); },
                              .grid = [this] { ShowGrid(); },
                              .values = [this] { m_values.BringUp(); },
                              .history = [this](EPart part, int index) { ShowHistory(part, index); }},
                             this)) {
  setCentralWidget(m_plant);
  setAcceptDrops(true);
  MakeActions();
  MakeStatusBar();
  JoinWorkspace();
  const QSize first(fontMetrics().averageCharWidth() * 200, fontMetrics().height() * 32);
  resize(first.boundedTo(screen()->availableSize() * 0.95));
  restoreGeometry(QByteArray::fromBase64(QByteArray(m_settings.Get(kPlace))));
  TakeState();
}

CMainWindow::~CMainWindow() {
  for (const QPointer<CAttachedWindow>& window : m_attached) delete window.data();
}

bool CMainWindow::Open(const CString& path) {
  SaveWorkspace();
  const CString fault = m_document.Open(path);
  if (!fault.IsEmpty()) {
    AfxMessageBox(fault);
    return false;
  }
  m_charts.Leave();
  m_settings.AddRecent(m_document.Path());
  m_messages.Log().Open(m_document.Path());
  StartChoosersIn(m_document.Folder());
  if (m_check) m_check->Forget();
  UseConfiguration();
  TakeState();
  OpenWorkspace();
  ShowEquationsAgain();
  return true;
}

// The demo gets a folder in the home folder; files that exist are kept.
void CMainWindow::OfferDemo() {
  if (!m_settings.Recent().IsEmpty() || !m_settings.Get(kDemoOffered).IsEmpty()) return;
  m_settings.Set(kDemoOffered, "1");
  const CString folder = JoinPath(FromScreen(QDir::homePath()), "vastra-demo");
  if (AfxMessageBox(
          "This is the first start of Vastra.\n\nCreate a demo? It logs a simulated kiln; no PLC is needed. "
          "Its configuration, " +
              CString(kDemoFile) + ", and its logs go into the folder\n\n" + folder,
          MB_YESNO | MB_ICONQUESTION) != IDYES)
    return;
  const CString path = JoinPath(folder, kDemoFile);
  bool isChanged = false;
  CString fault = MakeDemoFolders(folder);
  if (fault.IsEmpty()) fault = SaveDemo(path, isChanged);
  if (fault.IsEmpty())
    Open(path);
  else
    AfxMessageBox(folder + ": " + fault);
}

// Makes a run of the document, stopped, and shows its parts.
void CMainWindow::UseConfiguration() {
  m_messages.SetPlain(!m_keepLogs->isChecked());
  m_runner.SetConfiguration(m_document.ForRun(), RunOptions());
  m_runner.Run().AddObserver(&m_statistics);
  m_runner.Run().AddObserver(&m_chartSamples);
  m_isAhead = false;
  m_startFault.Empty();
  m_names = m_runner.Run().Names();
  ShowParts();
  ShowPlant();
  Trend().m_baseVars = m_names.input;
  m_values.SetSource(ValuesOf(m_runner.Run(), m_statistics));
  m_charts.SetLogger(
      ChartLoggerOf(m_runner.Run().Configuration(), m_chartSamples.Samples(), m_runner.Run().LiveState()));
  m_views.TakeStages(Stages(), m_runner.RefreshPeriod());
}

// A replay writes to no PLC unless the user has ticked the menu since the program was started.
CLoopOptions CMainWindow::RunOptions() {
  CLoopOptions options;
  options.trend = &Trend();
  options.replayWrites = m_replayWrites->isChecked();
  if (!m_keepLogs->isChecked()) return options.replayWrites = true, options;
  options.policy = CLogPolicy();
  options.patience = kPatience;
  return options;
}

// The next start uses the setting.
void CMainWindow::SetKeepLogs(bool keep) {
  m_settings.Set(kPlainLogs, keep ? "" : "1");
  if (m_document.IsOpen() && m_runner.State() == CRunner::EState::stopped) UseConfiguration();
}

// The plant is that of the run, or that of the document, if this has changed since and the run has ended.
bool CMainWindow::ShowsRun() const { return !m_isAhead || m_runner.State() != CRunner::EState::stopped; }

void CMainWindow::ShowParts() {
  const CStageNames& names = ShowsRun() ? m_runner.Run().Names() : m_names;
  CConfiguration shown = ShowsRun() ? m_runner.Run().Configuration() : m_document.Configuration();
  shown.m_trend = Trend();
  m_plant->ShowConfiguration(shown, names.hasInput ? names.input.GetSize() : -1);
}

void CMainWindow::ShowPlant() {
  const CRunner::EState state = m_runner.State();
  CPlantRun run;
  run.isStopped = state == CRunner::EState::stopped;
  run.isRunning = state == CRunner::EState::running;
  run.word = FromScreen(QString(NameOf(state)).toLower());
  run.keepsLogs = m_runner.Run().KeepsLogs();
  run.period = m_runner.Run().Period();
  if (m_document.Configuration().m_plcWrite.m_disableWriting) run.noWriting = "writing is disabled";
  if (LeavesOutWriting(m_document.Configuration(), RunOptions())) run.noWriting = "a replay writes to no PLC";
  run.startFault = m_startFault;
  m_plant->ShowRun(run, ShowsRun() ? m_runner.Run().LiveState() : std::make_shared<const CLiveState>());
}

void CMainWindow::EditConfiguration(const CString& place) {
  // The dialog of a view does not block this window; the sheet itself refuses an Apply while it is open.
  const QWidget* dialog = QApplication::activeModalWidget();
  if (dialog && dialog->windowModality() == Qt::ApplicationModal && HasOpenDialog()) return;
  CTrendConfig trend = Trend();
  CConfigurationSheet sheet(m_document.Configuration(), [&] { Apply(sheet, trend); });
  sheet.SetTrend(&trend);
  if (!m_document.Configuration().m_input.m_plcNodes.IsEmpty())
    sheet.SetFirst(CConfigurationSheet::PlaceOf(place));
  sheet.DoModal();
  StartAgain();
}

// While the logger runs, changes go to the document alone; the next start uses them.
void CMainWindow::Apply(const CConfigurationSheet& sheet, const CTrendConfig& trend) {
  CConfiguration edited = m_document.Configuration();
  sheet.GetConfiguration(edited);
  edited.m_trend.m_equations = trend.m_equations;  // the input page can have emptied them
  edited.m_trend.m_equationText = trend.m_equationText;
  TakeEdited(std::move(edited));
}

void CMainWindow::TakeEdited(CConfiguration edited) {
  const CConfiguration former = m_document.Configuration();
  if (m_document.Take(std::move(edited))) {
    if (m_runner.State() == CRunner::EState::stopped)
      UseConfiguration();
    else
      ApplyWhileRunning(former);
    if (m_names.hasInput) m_document.TakeBaseVars(m_names.input);
    CheckAgain();
    ShowEquationsAgain();
  }
  ShowState();
}

void CMainWindow::ApplyWhileRunning(CConfiguration former) {
  CConfiguration& now = m_document.Configuration();
  const int disable = now.m_plcWrite.m_disableWriting;
  bool isAhead = !m_runner.Run().DisableWriting(disable != 0);
  former.m_plcWrite.m_disableWriting = disable;
  isAhead = !IsSame(former, now) || isAhead;
  {
    const CRunMessenger::CQuiet quiet(m_messages.Messenger());
    m_names = FindStageNames(now);
  }
  ShowPlant();
  if (!isAhead) return;
  m_isAhead = true;
  ShowState();
  OfferRestart();
}

void CMainWindow::ShowReport() {
  CMemFile file;
  m_document.Stored().Report(file);
  auto* report = new CReportWindow(CString(file.Bytes()), this);
  report->setAttribute(Qt::WA_DeleteOnClose);
  report->show();
}

void CMainWindow::ShowAbout() {
  QMessageBox::about(this, "About Vastra",
                     "Vastra " VASTRA_VERSION "\n\nLogs samples from controllers and earlier logs.");
}

void CMainWindow::ShowTrend() {
  if (m_edit->isEnabled()) m_views.ShowTrend(Stages(), m_runner.RefreshPeriod());
}

void CMainWindow::ShowGrid() {
  if (m_edit->isEnabled()) m_views.ShowGrid(Stages());
}

void CMainWindow::TakeTrend() {
  m_document.TrendChanged();
  m_values.SetSource(ValuesOf(m_runner.Run(), m_statistics));
  m_plant->ShowTrend(Trend());
  ShowState();
}

// Enables what the state allows. While the stages open or close on their own thread nothing else may use
// them.
void CMainWindow::TakeState() {
  const CRunner::EState state = m_runner.State();
  const bool isStopped = state == CRunner::EState::stopped;
  const bool isSettled = isStopped || state == CRunner::EState::running;
  m_views.Enable(isSettled);
  m_charts.SetRunning(!isStopped);
  if (isSettled) m_messages.Messenger().HoldBoxes(false);
  if (isStopped && m_restarts) QTimer::singleShot(0, this, [this] { StartAgain(); });
  if (state == CRunner::EState::running) m_views.ResetNames();
  if (isSettled && m_document.IsOpen()) ShowCounts();
  if (m_document.IsOpen()) {
    if (isStopped && m_isAhead) ShowParts();
    ShowPlant();
  }
  m_start->setEnabled(isStopped && m_document.IsOpen());
  m_stop->setEnabled(state == CRunner::EState::running || state == CRunner::EState::starting);
  m_new->setEnabled(isStopped);
  m_newLogger->setEnabled(isStopped);
  m_open->setEnabled(isStopped);
  for (QAction* action : m_needDocument) action->setEnabled(isSettled && m_document.IsOpen());
  ShowState();
  if (isStopped && m_quitWanted) Quit();
}

void CMainWindow::ShowState() {
  QString state = NameOf(m_runner.State());
  if (m_isAhead && m_runner.State() == CRunner::EState::running)
    state += " (changes apply at the next start)";
  if (const CString& waits = m_runner.StopLine();
      !waits.IsEmpty() && m_runner.State() != CRunner::EState::stopped)
    state += ToScreen(": stopping, " + waits);
  m_stateText->setText(state);
  m_recent->setEnabled(m_open->isEnabled() && !m_settings.Recent().IsEmpty());
  setWindowTitle(m_document.IsOpen() ? ToScreen(m_document.Title()) + "[*] - Vastra" : "Vastra");
  setWindowModified(m_document.IsChanged());
}

void CMainWindow::ShowCounts() {
  m_views.NotePlaces();
  const CRunCounts& counts = m_runner.Run().Counts();
  QString text = QString("%1 samples, %2 failed reads, %3 late, in memory %4 of %5")
                     .arg(counts.scans.read)
                     .arg(counts.scans.failedReads)
                     .arg(counts.scans.late)
                     .arg(counts.fill.m_samples)
                     .arg(counts.fill.m_total);
  const bool isStopped = m_runner.State() == CRunner::EState::stopped;
  if (counts.kept.recovered) text += QString(", %1 recovered").arg(counts.kept.recovered);
  if (counts.kept.inJournal && isStopped)
    text += QString(", %1 in a journal only").arg(counts.kept.inJournal);
  if (counts.kept.lost) text = QString("%1 lost, ").arg(counts.kept.lost) + text;
  m_countsText->setText(text);
  m_progress->setVisible(counts.replay.logs != 0 && m_runner.State() == CRunner::EState::running);
  if (counts.replay.logs != 0) m_progress->setValue(static_cast<int>(100 * counts.replay.part));
}

void CMainWindow::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ActivationChange && m_document.IsOpen()) {
    m_views.NotePlaces();
    ShowState();
  }
  QMainWindow::changeEvent(event);
}

void CMainWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  if (HasOpenDialog()) return;
  if (m_runner.State() != CRunner::EState::stopped) {
    if (AfxMessageBox("The logger is running. Stop it and quit?",
                      MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
      return;
  }
  if (MayLoseChanges()) StopAndQuit();
}

// Closes an open dialog first: its caller has to return before the stages are destroyed.
void CMainWindow::StopAndQuit() {
  QWidget* popup = QApplication::activePopupWidget();
  if (QWidget* dialog = popup ? popup : QApplication::activeModalWidget()) {
    dialog->close();
    QTimer::singleShot(0, this, [this] { StopAndQuit(); });
    return;
  }
  m_quitWanted = true;
  if (m_runner.State() == CRunner::EState::stopped)
    Quit();
  else
    m_runner.Stop();
}

void CMainWindow::Attach() {
  const CString socket = AskForLogger(this);
  if (socket.IsEmpty()) return;
  std::erase_if(m_attached, [](const auto& window) { return window.isNull(); });
  m_attached.emplace_back(new CAttachedWindow(m_settings, socket));
  m_attached.back()->show();
}

void CMainWindow::Quit() {
  SaveWorkspace();
  m_settings.Set(kPlace, saveGeometry().toBase64().constData());
  m_views.Close();
  QApplication::exit();  // quit() asks each window, and the message window does not close
}

}  // namespace vastra
