#include "host/desktop/attached_window.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include <poll.h>

#include <algorithm>

#include "host/attach/find_loggers.h"
#include "host/common/shown_text.h"
#include "host/desktop/message_window.h"
#include "host/desktop/plant_view.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kInterval{100};  // between two samples
constexpr std::chrono::milliseconds kPause{2000};    // before the next attempt to connect
constexpr int kLongestText = 300;                    // characters of a state
constexpr UINT kRefresh = 100;                       // milliseconds
constexpr int kPlantPart = 3, kMessagesPart = 2;     // of the height
constexpr const char* kPlaceKey = "AttachedPlace";

QString OnScreen(const std::string& text) { return ToScreen(CString(Printable(text))); }

// The text can be as long as an outside program likes.
QString Cut(const QString& text) {
  return text.size() > kLongestText ? text.left(kLongestText) + "..." : text;
}

QString TimeOnScreen(const _timeb& time) {
  return QDateTime::fromSecsSinceEpoch(time.time).toString("yyyy-MM-dd hh:mm:ss");
}

}  // namespace

CString AskForLogger(QWidget* parent) {
  CString fault;
  QStringList names;
  const CLoggerFolders folders;
  for (const CLoggerPlace& place : FindLoggers(folders, fault)) names << ToScreen(place.name);
  bool isChosen = false;
  const QString chosen = QInputDialog::getItem(
      parent, "Attach", "A running logger, or the path of its feed:", names, 0, true, &isChosen);
  if (!isChosen || chosen.isEmpty()) return {};
  const CString text = FromScreen(chosen);
  return chosen.contains('/') ? text : PlaceOfLogger(folders, text).feed;
}

CAttachedWindow::CAttachedWindow(CSettings& settings, const CString& socket)
    : m_settings(settings),
      m_socket(socket),
      m_views(settings, true),
      m_values(settings, "AttachedValues"),
      m_charts(settings, [] {}),
      m_state(new QLabel(this)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle(ToScreen(socket));
  m_state->setWordWrap(true);
  m_state->setTextFormat(Qt::PlainText);
  MakeViews();
  auto* parts = new QSplitter(Qt::Vertical, this);
  parts->addWidget(m_plant);
  parts->addWidget(m_log);
  parts->setChildrenCollapsible(false);
  parts->setStretchFactor(0, kPlantPart);
  parts->setStretchFactor(1, kMessagesPart);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(MakeBar());
  layout->addWidget(parts, 1);
  resize(fontMetrics().averageCharWidth() * 150, fontMetrics().height() * 46);
  restoreGeometry(QByteArray::fromBase64(QByteArray(settings.Get(kPlaceKey))));
  m_timer.setSingleShot(true);
  connect(&m_timer, &QTimer::timeout, this, [this] { m_client ? Poll() : Connect(); });
  Connect();
}

// The log is a view of m_messages, which is gone before the children are.
CAttachedWindow::~CAttachedWindow() {
  m_settings.Set(kPlaceKey, saveGeometry().toBase64().constData());
  delete m_log;
}

void CAttachedWindow::MakeViews() {
  m_plant = new CPlantView(
      {.edit = {},
       .trend = [this] { m_views.ShowTrend(Stages(), kRefresh); },
       .grid = [this] { m_views.ShowGrid(Stages()); },
       .values = [this] { m_values.BringUp(); },
       .history = [this](EPart part,
                         int index) { m_charts.ShowHistory(m_logger.Configuration(), part, index); }},
      this);
  m_log = new CMessageWindow(m_settings, "AttachedLog", m_messages, {});
  m_log->setParent(this);
}

QWidget* CAttachedWindow::MakeBar() {
  auto* bar = new QWidget(this);
  auto* layout = new QHBoxLayout(bar);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(m_state, 1);
  const auto add = [&](const char* text, auto show) {
    auto* button = new QPushButton(text, bar);
    connect(button, &QPushButton::clicked, this, show);
    layout->addWidget(button);
  };
  add("&Trend", [this] { m_views.ShowTrend(Stages(), kRefresh); });
  add("Scan &Grid", [this] { m_views.ShowGrid(Stages()); });
  add("&Values", [this] { m_values.BringUp(); });
  add("C&hart", [this] { m_charts.ShowLogger(); });
  return bar;
}

void CAttachedWindow::Connect() {
  m_client = std::make_unique<CFeedClient>(m_socket,
                                           CClientRequest{{"sample", "counts", "message", "log"}, kInterval});
  Poll();
}

// Takes what has come, and waits for more.
void CAttachedWindow::Poll() {
  m_readable.reset();
  m_writable.reset();
  m_client->Poll();
  while (const std::optional<CFeedEvent> event = m_client->Take())
    std::visit([this](const auto& line) { Take(line); }, *event);
  if (m_client->HasEnded()) {
    ShowState("Not connected: " + OnScreen(m_client->Fault()));
    m_client.reset();
    m_logger.Lost();
    ShowRun();
    return m_timer.start(kPause);
  }
  Watch();
}

void CAttachedWindow::Watch() {
  const auto notify = [this](std::unique_ptr<QSocketNotifier>& notifier, QSocketNotifier::Type type) {
    notifier = std::make_unique<QSocketNotifier>(m_client->File(), type);
    // The notifier is destroyed by Poll: not in its own signal.
    connect(notifier.get(), &QSocketNotifier::activated, this, [this] { m_timer.start(0); });
  };
  if (m_client->Events() & POLLIN) notify(m_readable, QSocketNotifier::Read);
  if (m_client->Events() & POLLOUT) notify(m_writable, QSocketNotifier::Write);
  const auto rest =
      std::chrono::ceil<std::chrono::milliseconds>(m_client->Due() - CFeedClient::Time::clock::now());
  m_timer.start(std::clamp(rest, std::chrono::milliseconds(0), std::chrono::milliseconds(60000)));
}

void CAttachedWindow::Take(const CHelloLine& hello) {
  const CAttachedLogger::CChange change = m_logger.Take(hello);
  setWindowTitle(OnScreen(hello.name) + " (attached)");
  m_values.setWindowTitle("Values of " + OnScreen(hello.name));
  if (change.isOther) m_lastMessage = 0;
  if (change.hasParts || change.hasNames) {
    const int variables = m_logger.Names().IsEmpty() ? -1 : m_logger.Names().GetSize();
    m_plant->ShowConfiguration(m_logger.Configuration(), variables);
    ShowNames();
  }
  if (change.hasNames || change.isOther) m_chartSamples.Started(m_logger.Names());
  ShowRun();
}

void CAttachedWindow::ShowNames() {
  const CConfiguration& configuration = m_logger.Configuration();
  m_values.SetSource({.live = m_logger.Live(),
                      .statistics = &m_logger.Statistics(),
                      .names = {},
                      .nodes = NodesOf(configuration.m_input),
                      .period = m_logger.Period(),
                      .notes = configuration.m_variables});
  CChartLogger chart = ChartLoggerOf(configuration, m_chartSamples.Samples(), m_logger.Live());
  chart.sources.paths = ChartPathsOf(m_logger.Hello());
  chart.sources.isThinned = true;
  chart.title = "Chart of " + CString(m_logger.Hello().name);
  m_charts.SetLogger(std::move(chart));
  CStringArray names = m_logger.Names();
  if (names.IsEmpty() || (m_trend.IsOpen() && names == m_trend.GetOptions()->m_baseVars)) return;
  m_trend.Close();
  m_trend.GetOptions()->m_baseVars = names;
  m_trend.Open(names);
  m_views.ResetNames();
}

void CAttachedWindow::Take(const CStateLine& state) {
  m_logger.Take(state);
  m_stateText = OnScreen(state.state) + " since " + TimeOnScreen(state.since);
  if (!state.reason.empty()) m_stateText += ": " + OnScreen(state.reason);
  ShowState(m_stateText);
  ShowRun();
}

void CAttachedWindow::Take(const CSampleLine& sample) {
  const bool isTaken = m_logger.Take(sample);
  ShowState(m_stateText);
  if (!isTaken) return;
  m_chartSamples.Sampled(m_logger.Newest());
  if (m_trend.Write(m_logger.Newest())) m_views.Refresh();
}

void CAttachedWindow::Take(const CCountsLine& counts) {
  const bool keptLogs = m_logger.Run().keepsLogs;
  m_logger.Take(counts);
  if (keptLogs != m_logger.Run().keepsLogs) ShowRun();
}

void CAttachedWindow::Take(const CMessageLine& message) {
  if (message.number <= m_lastMessage || AddsNothing(message.Message())) return;
  m_lastMessage = message.number;
  m_messages.AddMessage(LineOf(message.Message()));
}

void CAttachedWindow::Take(const CDroppedLine& dropped) {
  if (dropped.messages)
    m_messages.AddMessage(DesktopLine(
        severityWarning, Counted(dropped.messages, "message") + " left out: too many came at once"));
}

void CAttachedWindow::ShowRun() {
  m_plant->ShowRun(m_logger.Run(), m_logger.Live());
  m_charts.SetRunning(m_logger.Run().isRunning);
}

void CAttachedWindow::ShowState(const QString& text) {
  const _timeb& last = m_logger.Newest().m_time;
  m_state->setText(Cut(last.time == 0 || !m_client ? text : text + ", last sample " + TimeOnScreen(last)));
  m_state->setToolTip(m_state->text());
}

}  // namespace vastra
