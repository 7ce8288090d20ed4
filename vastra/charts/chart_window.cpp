#include "vastra/charts/chart_window.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QFileInfo>
#include <QJsonObject>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

#include "vastra/charts/axis_dialog.h"
#include "vastra/charts/chart_colour_rules.h"
#include "vastra/charts/chart_layout_file.h"
#include "vastra/platform/prompt.h"
#include "vastra/platform/time.h"
#include "vastra/ui/dropped_paths.h"
#include "vastra/ui/elided_label.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kNoteTime = 10'000;            // milliseconds
constexpr int kTakePause = 40;               // milliseconds between two looks at the data
constexpr int kLastRowsPause = 500;          // milliseconds until the last samples of a run have come
constexpr CMoment kFollowedLength = 60'000;  // milliseconds that a chart of a logger begins with
constexpr std::size_t kMostFaults = 20;      // that are listed

}  // namespace

CChartWindow::CChartWindow() {
  setWindowTitle("Chart");
  setAcceptDrops(true);
  MakeLayout();
  MakeMenus();
  m_take.setSingleShot(true);
  connect(&m_take, &QTimer::timeout, this, [this] { TakeData(); });
  m_noteEnd.setSingleShot(true);
  connect(&m_noteEnd, &QTimer::timeout, this, [this] { Note({}); });
  m_followEnd.setSingleShot(true);
  connect(&m_followEnd, &QTimer::timeout, this, [this] { EndFollowing(); });
  m_taken.start();
  m_data = CChartData::Make([this] { NoteChange(); });
  ShowHint();
  Changed();
}

CChartWindow::~CChartWindow() { m_data.reset(); }

void CChartWindow::MakeLayout() {
  m_view = new CChartView({.changed = [this] { Changed(); },
                           .editAxis = [this](int axis) { EditAxis(axis); },
                           .showMenu = [this](const QPoint& place) { ShowMenu(place); }},
                          this);
  m_variables = new CVariableList([this](const std::vector<CString>& chosen) { AddCurves(chosen); }, this);
  m_figures = new CCursorTable(this);
  m_rows = new QSplitter(Qt::Vertical, this);
  m_rows->addWidget(m_view);
  m_rows->addWidget(m_figures);
  m_rows->setStretchFactor(0, 1);
  m_rows->setChildrenCollapsible(false);
  m_columns = new QSplitter(Qt::Horizontal, this);
  m_columns->addWidget(m_variables);
  m_columns->addWidget(m_rows);
  m_columns->setStretchFactor(1, 1);
  m_columns->setCollapsible(1, false);
  m_figures->hide();
  auto* frame = new QWidget(this);
  auto* layout = new QVBoxLayout(frame);
  layout->setContentsMargins(6, 6, 6, 0);
  layout->addWidget(m_columns);
  setCentralWidget(frame);
  const int character = fontMetrics().averageCharWidth(), line = fontMetrics().height();
  m_columns->setSizes({character * 32, character * 108});
  m_rows->setSizes({line * 30, line * 9});
  m_status = NewElidedLabel(this);
  m_faults = new QPushButton(this);
  m_faults->setFlat(true);
  m_cancel = new QPushButton("Cancel Export", this);
  statusBar()->addWidget(m_status, 1);
  statusBar()->addPermanentWidget(m_faults);
  statusBar()->addPermanentWidget(m_cancel);
  m_faults->hide();
  m_cancel->hide();
  connect(m_faults, &QPushButton::clicked, this, [this] { ShowFaults(); });
  connect(m_cancel, &QPushButton::clicked, this, [this] { m_data->CancelExport(); });
  resize(character * 140, line * 40);
}

void CChartWindow::BringUp() {
  isMinimized() ? showNormal() : show();
  raise();
  activateWindow();
}

void CChartWindow::SetSources(CChartSources sources) {
  m_sources = std::move(sources);
  UseSources();
}

void CChartWindow::AddPaths(const std::vector<CString>& paths) {
  for (const CString& path : paths) m_added.push_back({path, QFileInfo(ToScreen(path)).isDir()});
  UseSources();
}

void CChartWindow::UseSources() {
  CChartSources sources = m_sources;
  sources.paths.insert(sources.paths.end(), m_added.begin(), m_added.end());
  m_data->SetSources(std::move(sources));
  m_asked = {};
  Changed();
}

void CChartWindow::SetGroups(std::vector<CListedNode> groups) {
  m_groups = std::move(groups);
  m_variables->SetVariables(m_data->Variables(), m_groups);
}

void CChartWindow::SetUnits(const std::map<CString, CString>& units) {
  m_variables->SetUnits(units);
  m_view->Change([&](CChartState& state) { state.SetUnits(units); });
}

void CChartWindow::SetComments(const std::map<CString, CString>& comments) {
  m_variables->SetComments(comments);
}

void CChartWindow::FollowNewest() {
  _timeb now;
  _ftime(now);
  m_view->Change([&](CChartState& state) { state.StartFollowing(kFollowedLength, MomentOf(now)); });
}

void CChartWindow::AddCurves(const std::vector<CString>& variables) {
  m_view->Change([&](CChartState& state) {
    for (const CString& variable : variables) state.Add(variable);
  });
  if (m_view->State().Layout().curves.size() >= kMostCurves)
    Note(QString("A chart has %1 curves at most").arg(kMostCurves));
}

// After anything that the user has done.
void CChartWindow::Changed() {
  if (!m_data) return;  // while the window is made
  UpdateChartCommands(m_commands, *m_view);
  m_data->Watch(m_view->State().Layout().isFollowing);
  Ask();
  AskFigures();
  MarkVariables();
  ShowHint();
  ShowStatus();
}

void CChartWindow::Ask() {
  const CChartState& state = m_view->State();
  if (!state.HasRange()) return;
  CChartQuery query = QueryFor(state.Range(), m_view->PlotPixels(), state.Variables());
  if (Serves(m_asked, state.Range(), query)) return;
  m_asked = query;
  m_data->Ask(std::move(query));
}

void CChartWindow::AskFigures() {
  const CChartState& state = m_view->State();
  m_figures->setVisible(state.HasCursors());
  if (!state.HasCursors()) return;
  std::vector<CString> variables = state.Variables();
  const CMoment cursors[kCursors] = {state.CursorAt(0), state.CursorAt(1)};
  if (variables != m_figureVariables || !std::ranges::equal(cursors, m_figureCursors)) {
    m_figureVariables = variables;
    std::ranges::copy(cursors, m_figureCursors);
    m_cursorFigures = {};
    m_data->AskStatistics(state.BetweenCursors(), variables);
    m_data->AskValues({std::begin(cursors), std::end(cursors)}, variables);
  }
  m_figures->Show(state, m_cursorFigures);
}

void CChartWindow::TakeFigures() {
  if (!m_view->State().HasCursors() || m_figureVariables.empty()) return;
  m_cursorFigures.between = m_data->Statistics();
  m_cursorFigures.values = m_data->Values();
  m_cursorFigures.faults = m_data->FigureFaults();
  m_figures->Show(m_view->State(), m_cursorFigures);
}

// On the thread that reads. Changes that come at once are one look.
void CChartWindow::NoteChange() {
  if (m_isNoted.exchange(true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        const auto since = static_cast<int>(std::min<qint64>(m_taken.elapsed(), kTakePause));
        if (!m_take.isActive()) m_take.start(kTakePause - since);
      },
      Qt::QueuedConnection);
}

void CChartWindow::TakeData() {
  m_isNoted = false;
  m_taken.restart();
  m_variables->SetVariables(m_data->Variables(), m_groups);
  FitList();
  m_view->SetPicture(m_data->Picture());
  TakeRows();
  TakeFirstCurves();
  TakeFigures();
  TakeExport();
  ShowHint();
  ShowStatus();
}

// The list leaves most of a small screen to the plot.
void CChartWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  SetListWidth(m_columns->sizes().front());
}

void CChartWindow::SetListWidth(int list) {
  list = std::min(list, width() / 3);
  m_columns->setSizes({list, width() - list});
}

// Long names are shown whole, unless the user has chosen the width.
void CChartWindow::FitList() {
  if (m_isListFitted || m_data->Variables().empty()) return;
  m_isListFitted = true;
  SetListWidth(std::max(m_columns->sizes().front(), m_variables->BestWidth()));
}

// A chart that follows goes on while no node answers.
void CChartWindow::TakeRows() {
  CMomentRange rows = m_data->Range();
  if (rows.to > rows.from) rows.to = std::max(rows.to, m_awayUntil);
  if (!(rows == m_view->State().Rows())) m_view->Change([&](CChartState& state) { state.SetRows(rows); });
}

void CChartWindow::SetAway(CAwayRanges away) {
  if (!m_sources.live) return;
  for (const auto& [variable, ranges] : away)
    if (!ranges.empty()) m_awayUntil = std::max(m_awayUntil, ranges.back().to);
  m_view->Change([&](CChartState& state) { state.SetAway(std::move(away)); });
  TakeRows();
}

void CChartWindow::SetRunning(bool isRunning) {
  if (!m_sources.live) return;
  if (!isRunning) return m_followEnd.start(kLastRowsPause);
  m_followEnd.stop();
  const bool goesOn = m_followed && *m_followed == m_view->State().Range();
  m_followed.reset();
  if (goesOn) m_view->Change([](CChartState& state) { state.Follow(true); });
}

void CChartWindow::EndFollowing() {
  if (!m_data->IsScanned()) return m_followEnd.start(kLastRowsPause);
  if (!m_view->State().Layout().isFollowing) return;
  m_view->Change([](CChartState& state) { state.Follow(false); });
  m_followed = m_view->State().Range();
}

void CChartWindow::TakeFirstCurves() {
  if (m_firstCurves == 0 || !m_data->IsScanned()) return;
  std::vector<CString> variables = m_variables->Variables();
  if (variables.empty()) return;
  const std::size_t most = std::exchange(m_firstCurves, 0);
  if (!m_view->State().Layout().curves.empty() || (m_isAllOrNone && variables.size() > most)) return;
  variables.resize(std::min(variables.size(), most));
  AddCurves(variables);
}

void CChartWindow::TakeExport() {
  if (m_exportPath.IsEmpty()) return;
  const CChartData::CExportState state = m_data->ExportState();
  m_cancel->setVisible(state.isRunning);
  if (state.isRunning) return;
  const CString path = std::exchange(m_exportPath, CString());
  if (state.fault.IsEmpty()) return Note(ToScreen(path + " was written"));
  ShowStatus();
  AfxMessageBox(state.fault);
}

// What the plot says while it has nothing to show.
void CChartWindow::ShowHint() {
  const CChartState& state = m_view->State();
  const bool hasRows = state.Rows().to > state.Rows().from;
  QString hint;
  if (!m_data->IsScanned())
    hint = "Looking at the logs...";
  else if (!hasRows && !m_sources.live)
    hint = EmptyHint();
  else if (state.Layout().curves.empty())
    hint = "Drag variables here, or double-click them in the list (Enter).";
  m_view->SetHint(hint);
}

// Why nothing was found.
QString CChartWindow::EmptyHint() const {
  const std::vector<CHistoryFault> faults = m_data->Faults();
  QString hint = "There are no logs";
  if (!faults.empty()) {
    hint = ToScreen(faults.front().path + ": " + faults.front().fault);
    if (faults.size() > 1) hint += QString("; and %1 more").arg(faults.size() - 1);
  } else if (m_added.size() == 1) {
    hint += " in " + ToScreen(m_added.front().path);
  }
  return hint + ".\nDrop logs or a folder here, or choose them with File, Add Logs.";
}

void CChartWindow::ShowStatus() {
  const CChartPicture& picture = m_view->State().Picture();
  const CChartState& state = m_view->State();
  QStringList parts;
  if (!m_exportPath.IsEmpty()) {
    parts << QString("Writing %1: %2 %")
                 .arg(ToScreen(m_exportPath))
                 .arg(static_cast<int>(100 * m_data->ExportState().progress));
  } else if (!m_note.isEmpty()) {
    parts << m_note;
  }
  if (!state.Layout().curves.empty() && !picture.isFinal)
    parts << QString("Reading: %1 %").arg(static_cast<int>(100 * picture.progress));
  if (state.HasRange()) {
    const CMomentRange range = state.Range();
    parts << ToScreen(state.Clock().Text(range.from) + "  to  " + state.Clock().Text(range.to) + "  (" +
                      SpanText(range.to - range.from) + ")");
  }
  m_status->setText(parts.join("     "));
  const std::size_t faults = m_data->Faults().size();
  m_faults->setVisible(faults > 0);
  m_faults->setText(QString("%1 %2 not read").arg(faults).arg(faults == 1 ? "log" : "logs"));
}

// The result of an operation, for a while.
void CChartWindow::Note(const QString& note) {
  m_note = note;
  if (!note.isEmpty()) m_noteEnd.start(kNoteTime);
  ShowStatus();
}

void CChartWindow::ShowFaults() {
  QString text;
  const std::vector<CHistoryFault> faults = m_data->Faults();
  for (std::size_t i = 0; i < std::min(faults.size(), kMostFaults); ++i)
    text += ToScreen(faults[i].path + ": " + faults[i].fault) + '\n';
  if (faults.size() > kMostFaults) text += QString("and %1 more").arg(faults.size() - kMostFaults);
  QMessageBox::warning(this, "Logs That Cannot Be Read", text);
}

void CChartWindow::MarkVariables() {
  const bool isDark = InkOf(m_view->palette()).isDark;
  std::map<CString, unsigned> colours;
  for (const CChartCurve& curve : m_view->State().Layout().curves)
    colours[curve.variable] = CurveColour(curve.colour, isDark);
  m_variables->Mark(colours);
}

void CChartWindow::EditAxis(int axis) {
  const CChartState& state = m_view->State();
  const int place = PlaceOfAxis(state.Layout(), axis);
  if (place < 0) return;
  QStringList names;
  for (const CChartCurve& curve : state.Layout().curves)
    if (curve.axis == axis) names << ToScreen(state.Caption(curve));
  CAxisDialog dialog(names.join(", "), state.Layout().axes[static_cast<std::size_t>(place)], this);
  if (dialog.exec() != QDialog::Accepted) return;
  m_view->Change([&](CChartState& changed) {
    if (dialog.Axis().isAutomatic)
      changed.SetAutomatic(axis);
    else
      changed.SetAxisRange(axis, dialog.Axis().range);
  });
}

QJsonObject CChartWindow::State() const {
  const auto bytes = [](const QByteArray& value) { return QString::fromLatin1(value.toBase64()); };
  return {{"layout", LayoutFields(m_view->State().StoredLayout())},
          {"place", bytes(saveGeometry())},
          {"columns", bytes(m_columns->saveState())},
          {"rows", bytes(m_rows->saveState())},
          {"cursors", m_view->State().HasCursors()}};
}

void CChartWindow::SetState(const QJsonObject& state) {
  const auto bytes = [&](const char* key) {
    return QByteArray::fromBase64(state[key].toString().toLatin1());
  };
  restoreGeometry(bytes("place"));
  m_isListFitted = m_columns->restoreState(bytes("columns"));
  m_rows->restoreState(bytes("rows"));
  CChartLayout layout;
  if (!ReadLayoutFields(state["layout"].toObject(), layout).IsEmpty()) return;
  m_view->Change([&](CChartState& changed) {
    changed.SetLayout(std::move(layout));
    if (state["cursors"].toBool() && changed.HasRange()) changed.ShowCursors(true);
  });
}

void CChartWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!DroppedPaths(*event->mimeData()).empty()) event->acceptProposedAction();
}

void CChartWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  AddPaths(DroppedPaths(*event->mimeData()));
}

}  // namespace vastra
