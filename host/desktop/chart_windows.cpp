#include "host/desktop/chart_windows.h"

#include <QFileInfo>

#include "host/common/paths.h"
#include "host/desktop/chart_source.h"
#include "host/desktop/value_rules.h"
#include "host/desktop/workspace.h"
#include "vastra/platform/chooser.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr const char* kChartKey = "Chart";
constexpr std::size_t kFirstCurves = 6;         // of a chart of logs
constexpr std::size_t kFirstOfLogger = 4;       // and of that of a logger
constexpr std::chrono::seconds kLookPeriod{1};  // at the nodes
constexpr const char* kLogEndings[] = {".rph", ".rpd", ".journal"};
constexpr const char* kLogsFilter =
    "Logs (*.rph *.rpd *.journal)|*.rph;*.rpd;*.journal|All Files (*.*)|*.*||";

}  // namespace

CChartLogger ChartLoggerOf(const CConfiguration& configuration, std::shared_ptr<const CLiveSamples> samples,
                           std::shared_ptr<const CLiveState> state) {
  CChartLogger logger;
  logger.sources = {ChartPathsOf(configuration), std::move(samples)};
  logger.state = std::move(state);
  for (const CValueNode& node : NodesOf(configuration.m_input)) {
    logger.nodes.push_back({node.name, node.variables});
    if (!node.alive.IsEmpty()) logger.nodes.back().variables.push_back(node.alive);
  }
  for (const auto& [name, note] : configuration.m_variables) {
    if (!note.m_unit.IsEmpty()) logger.units[name] = note.m_unit;
    if (!note.m_comment.IsEmpty()) logger.comments[name] = note.m_comment;
  }
  return logger;
}

CChartWindows::CChartWindows(CSettings& settings, std::function<void()> closed)
    : m_settings(settings), m_closed(std::move(closed)) {
  QObject::connect(&m_look, &QTimer::timeout, [this] { LookAtNodes(); });
  m_look.start(kLookPeriod);
}

CChartWindows::~CChartWindows() {
  if (m_window) m_settings.Set(kChartKey, StateText(m_window->State()));
  delete m_window.data();
  for (CChartWindow* window : m_windows) {
    window->disconnect();
    delete window;
  }
}

void CChartWindows::SetLogger(CChartLogger logger) {
  m_logger = std::move(logger);
  if (m_window) ShowLoggerIn(*m_window);
}

void CChartWindows::SetRunning(bool isRunning) {
  if (isRunning == m_isRunning) return;
  m_isRunning = isRunning;
  if (m_window) m_window->SetRunning(isRunning);
  for (CChartWindow* window : m_windows) window->SetRunning(isRunning);
  if (!isRunning) m_away.End();
}

void CChartWindows::LookAtNodes() {
  if (!m_isRunning || !m_logger.state || !m_logger.state->CopyNewest(m_newest) || !m_newest.nodes) return;
  _timeb now;
  _ftime(now);
  if (!m_away.Take(*m_newest.nodes, MomentOf(now))) return;
  if (m_window) m_window->SetAway(m_away.ByVariable(m_logger.nodes));
  for (CChartWindow* window : m_windows) window->SetAway(m_away.ByVariable(m_logger.nodes));
}

void CChartWindows::UseLogger(CChartWindow& window, CChartSources sources) {
  window.SetGroups(m_logger.nodes);
  window.SetUnits(m_logger.units);
  window.SetComments(m_logger.comments);
  window.SetSources(std::move(sources));
  window.SetAway(m_away.ByVariable(m_logger.nodes));
}

void CChartWindows::ShowLoggerIn(CChartWindow& window) {
  if (!m_logger.title.IsEmpty()) window.setWindowTitle(ToScreen(m_logger.title));
  UseLogger(window, m_logger.sources);
}

void CChartWindows::Leave() {
  m_away.Clear();
  if (!m_window) return;
  m_settings.Set(kChartKey, StateText(m_window->State()));
  delete m_window.data();
}

// A place that was kept, but not the curves of another logger.
void CChartWindows::ShowLogger() {
  if (!m_window) {
    m_window = new CChartWindow;
    QJsonObject state = StateFields(m_settings.Get(kChartKey));
    state.remove("layout");
    m_window->SetState(state);
    ShowLoggerIn(*m_window);
    m_window->FollowNewest();
    m_window->AddFirstCurves(kFirstOfLogger, false);
    m_window->SetRunning(m_isRunning);
  }
  m_window->BringUp();
}

CChartWindow* CChartWindows::NewWindow(const QString& title) {
  auto* window = new CChartWindow;
  window->setAttribute(Qt::WA_DeleteOnClose);
  window->setWindowTitle(title);
  QObject::connect(window, &QObject::destroyed, [this, window] {
    std::erase(m_windows, window);
    if (m_windows.empty()) m_closed();
  });
  m_windows.push_back(window);
  return window;
}

void CChartWindows::ShowHistory(const CConfiguration& configuration, EPart part, int index) {
  const auto show = [&](const auto& list) {
    for (const auto* shown : list)
      if (index-- == 0) return ShowHistory(shown->m_name, ChartPathsOf(*shown), shown->m_varNames);
  };
  if (part == EPart::output) show(configuration.m_outputs.m_outputs);
  if (part == EPart::summary) show(configuration.m_summaries.m_summaries);
}

void CChartWindows::ShowHistory(const CString& name, std::vector<CChartPath> paths,
                                const CStringArray& variables) {
  CChartWindow* window = NewWindow("History of " + ToScreen(name) + " - Chart");
  UseLogger(*window, {std::move(paths), m_logger.sources.live, m_logger.sources.isThinned});
  const auto count = std::min<std::ptrdiff_t>(variables.GetSize(), kFirstCurves);
  window->AddCurves({variables.begin(), variables.begin() + count});
  window->BringUp();
}

void CChartWindows::OpenPaths(const std::vector<CString>& paths) {
  if (paths.empty()) return;
  const QString first = QFileInfo(ToScreen(paths.front())).fileName();
  const QString name = first.isEmpty() ? ToScreen(paths.front()) : first;
  CChartWindow* window = NewWindow(
      (paths.size() == 1 ? name : QString("%1 and %2 more").arg(name).arg(paths.size() - 1)) + " - Chart");
  window->AddFirstCurves(kFirstCurves, true);
  window->AddPaths(paths);
  window->BringUp();
}

void CChartWindows::AskForLogs() {
  CFileQuestion question;
  question.filter = kLogsFilter;
  question.mustExist = true;
  CStringArray paths;
  if (ChooseFiles(question, paths)) OpenPaths({paths.begin(), paths.end()});
}

void CChartWindows::AskForFolder() {
  CString folder;
  if (ChooseFolder(folder)) OpenPaths({folder});
}

bool IsChartPath(const CString& path) {
  if (QFileInfo(ToScreen(path)).isDir()) return true;
  return std::ranges::any_of(kLogEndings, [&](const CString& ending) {
    return path.Right(ending.GetLength()).CompareNoCase(ending) == 0;
  });
}

}  // namespace vastra
