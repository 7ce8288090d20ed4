#include "host/desktop/attached_window.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <poll.h>

#include <algorithm>

#include "host/attach/find_loggers.h"
#include "host/common/shown_text.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kInterval{100};  // between two samples
constexpr std::chrono::milliseconds kPause{2000};    // before the next attempt to connect
constexpr int kMostLines = 1000;                     // of messages that are shown
constexpr int kMostNodes = 20;                       // of those that are away
constexpr int kLongestText = 300;                    // characters of a state or a node
constexpr UINT kRefresh = 100;                       // milliseconds
constexpr double kLongestPeriod = 1e9;               // of scans that is believed, in milliseconds

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
    : m_socket(socket), m_views(settings, true), m_values(settings, "AttachedValues") {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle(ToScreen(socket));
  m_state = new QLabel(this);
  m_nodes = new QLabel(this);
  for (QLabel* label : {m_state, m_nodes}) label->setWordWrap(true), label->setTextFormat(Qt::PlainText);
  m_messages = new QPlainTextEdit(this);
  m_messages->setReadOnly(true);
  m_messages->setMaximumBlockCount(kMostLines);
  m_messages->setAccessibleName("Messages");
  auto* trend = new QPushButton("&Trend", this);
  auto* grid = new QPushButton("Scan &Grid", this);
  auto* values = new QPushButton("&Values", this);
  connect(trend, &QPushButton::clicked, this, [this] { m_views.ShowTrend(Stages(), kRefresh); });
  connect(grid, &QPushButton::clicked, this, [this] { m_views.ShowGrid(Stages()); });
  connect(values, &QPushButton::clicked, this, [this] { m_values.BringUp(); });
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(m_state, 1);
  buttons->addWidget(trend);
  buttons->addWidget(grid);
  buttons->addWidget(values);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(buttons);
  layout->addWidget(m_nodes);
  layout->addWidget(m_messages);
  resize(m_messages->fontMetrics().averageCharWidth() * 100, m_messages->fontMetrics().height() * 24);
  m_timer.setSingleShot(true);
  connect(&m_timer, &QTimer::timeout, this, [this] { m_client ? Poll() : Connect(); });
  Connect();
}

void CAttachedWindow::Connect() {
  m_client = std::make_unique<CFeedClient>(m_socket, CClientRequest{{"sample", "message"}, kInterval});
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
    m_statistics.Stopped();
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
  CStringArray names;
  for (const std::string& name : hello.variables) names.Add(CString(name));
  setWindowTitle(OnScreen(hello.name) + " (attached)");
  if (!(hello.started == m_started)) m_lastMessage = 0;
  m_started = hello.started;
  if (!names.IsEmpty()) TakeNames(hello, names);
  // A logger that starts has no variables yet; the chosen ones stay until it has.
  if (names.IsEmpty() || (m_trend.IsOpen() && names == m_trend.GetOptions()->m_baseVars)) return;
  m_trend.Close();
  m_trend.GetOptions()->m_baseVars = names;
  m_trend.Open(names);
  m_views.ResetNames();
}

// The feed does not say which node a variable is from.
void CAttachedWindow::TakeNames(const CHelloLine& hello, const CStringArray& names) {
  m_live->Started(names);
  m_statistics.Started(names);
  const std::chrono::duration<double, std::milli> period(
      hello.period > 0 ? std::min(hello.period, kLongestPeriod) : 0);
  m_values.setWindowTitle("Values of " + OnScreen(hello.name));
  m_values.SetSource({.live = m_live,
                      .statistics = &m_statistics,
                      .names = {},
                      .nodes = {},
                      .period = std::chrono::ceil<std::chrono::milliseconds>(period)});
}

void CAttachedWindow::Take(const CStateLine& state) {
  m_stateText = OnScreen(state.state) + " since " + TimeOnScreen(state.since);
  if (!state.reason.empty()) m_stateText += ": " + OnScreen(state.reason);
  if (state.lastSample) m_sample.m_time = *state.lastSample;
  ShowState(m_stateText + LastSample());
  QStringList away;
  for (const CNodeFacts& node : state.nodes)
    if (!node.up && away.size() < kMostNodes)
      away << Cut(OnScreen(node.name) + " is away since " + TimeOnScreen(node.since) + ": " +
                  OnScreen(node.reason));
  m_nodes->setText(away.join("\n"));
  m_nodes->setVisible(!away.isEmpty());
}

void CAttachedWindow::Take(const CSampleLine& sample) {
  m_sample.m_time = sample.time;
  ShowState(m_stateText + LastSample());
  m_sample.m_values.SetSize(static_cast<int>(sample.values.size()));
  std::copy(sample.values.begin(), sample.values.end(), m_sample.m_values.begin());
  if (m_sample.m_values.GetSize() != m_trend.GetOptions()->m_baseVars.GetSize() || !m_trend.Write(m_sample))
    return;
  m_views.Refresh();
  m_live->Sampled(m_sample);
  m_statistics.Sampled(m_sample);
}

void CAttachedWindow::Take(const CMessageLine& message) {
  if (message.number <= m_lastMessage || AddsNothing(message.Message())) return;
  m_lastMessage = message.number;
  m_messages->appendPlainText(TimeOnScreen(message.time) + "  " +
                              OnScreen(Shortened(MessageText(message.Message()).c_str())));
}

void CAttachedWindow::Take(const CDroppedLine& dropped) {
  if (dropped.messages)
    m_messages->appendPlainText(QString("(%1 messages are left out)").arg(dropped.messages));
}

QString CAttachedWindow::LastSample() const {
  return m_sample.m_time.time == 0 ? QString() : ", last sample " + TimeOnScreen(m_sample.m_time);
}

void CAttachedWindow::ShowState(const QString& text) {
  m_state->setText(Cut(text));
  m_state->setToolTip(m_state->text());
}

}  // namespace vastra
