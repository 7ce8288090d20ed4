#include "host/desktop/values_window.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QStyle>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>
#include <numeric>

#include "host/desktop/values_model.h"
#include "host/desktop/workspace.h"
#include "host/run/run.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/search_field.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kLookPeriod{100};
constexpr std::chrono::milliseconds kSortPeriod{1000};  // rows that move faster cannot be read
// By CValueTable::EColumn: the widths in digits, those of names and units at most; the last one has the rest.
constexpr int kValueWidths[] = {30, 15, 14, 9, 14, 14, 14, 13};
static_assert(std::size(kValueWidths) == CValueTable::columns);

// The selected rows of view, from top to bottom.
QModelIndexList RowsIn(const QTableView& view) {
  QModelIndexList rows = view.selectionModel()->selectedRows();
  std::ranges::sort(rows, {}, &QModelIndex::row);
  return rows;
}

}  // namespace

CValueSource ValuesOf(CRun& run, CValueStatistics& statistics) {
  const CStringArray names = run.SampleNames();
  return {.live = run.LiveState(),
          .statistics = &statistics,
          .names = {names.begin(), names.end()},
          .nodes = NodesOf(run.Configuration().m_input),
          .period = std::chrono::duration_cast<std::chrono::milliseconds>(run.Period()),
          .notes = run.Configuration().m_variables};
}

CValuesWindow::CValuesWindow(CSettings& settings, const char* name)
    : m_settings(settings),
      m_name(name),
      m_model(new CValuesModel(this)),
      m_view(new QTableView(this)),
      m_search(NewSearchField("Search", this)),
      m_count(new QLabel(this)) {
  setWindowTitle("Values");
  new QVBoxLayout(this);
  MakeBar();
  MakeTable();
  SetState(m_settings.Get(m_name));
  connect(&m_timer, &QTimer::timeout, this, [this] { Look(); });
}

CValuesWindow::~CValuesWindow() {
  if (testAttribute(Qt::WA_WState_Created)) m_settings.Set(m_name, State());  // it was opened
}

void CValuesWindow::MakeBar() {
  m_search->setToolTip("Words of a variable or a node (Ctrl+F)");
  connect(m_search, &QLineEdit::textChanged, this, [this] { Search(); });
  connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, m_search, [this] {
    m_search->setFocus(Qt::ShortcutFocusReason);
    m_search->selectAll();
  });
  auto* down = new QShortcut(Qt::Key_Down, m_search);
  down->setContext(Qt::WidgetShortcut);
  connect(down, &QShortcut::activated, m_view, [this] {
    m_view->setFocus(Qt::OtherFocusReason);
    if (!m_view->selectionModel()->hasSelection())
      m_view->selectRow(std::max(0, m_view->currentIndex().row()));
  });
  auto* reset = new QPushButton("&Reset", this);
  reset->setToolTip("Min, max and mean begin again");
  connect(reset, &QPushButton::clicked, this, [this] { Reset(); });
  auto* bar = new QHBoxLayout;
  bar->addWidget(m_search, 1);
  bar->addWidget(m_count);
  bar->addWidget(reset);
  static_cast<QVBoxLayout*>(layout())->addLayout(bar);
}

void CValuesWindow::MakeTable() {
  const QFontMetrics metrics = m_view->fontMetrics();
  m_view->setModel(m_model);
  m_view->setAccessibleName("Values");
  RingOnFocus(*m_view);
  m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
  m_view->setDragEnabled(true);
  m_view->setAlternatingRowColors(true);
  m_view->setShowGrid(false);
  m_view->setWordWrap(false);
  m_view->setTabKeyNavigation(false);
  m_view->verticalHeader()->hide();
  m_view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  m_view->verticalHeader()->setDefaultSectionSize(metrics.height() + metrics.height() / 3);
  QHeaderView* header = m_view->horizontalHeader();
  header->setHighlightSections(false);
  header->setStretchLastSection(true);
  header->setSortIndicatorClearable(true);
  header->setSortIndicator(CValueTable::columnName, Qt::AscendingOrder);
  m_view->setSortingEnabled(true);
  for (int column = 0; column < CValueTable::columns; ++column)
    m_view->setColumnWidth(column, metrics.horizontalAdvance('0') * kValueWidths[column]);
  auto* copy = new QAction("&Copy", m_view);
  copy->setShortcut(QKeySequence::Copy);
  copy->setShortcutContext(Qt::WidgetShortcut);
  connect(copy, &QAction::triggered, this, [this] { Copy(); });
  m_view->addAction(copy);
  m_view->addAction(MakeSortMenu()->menuAction());
  m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
  layout()->addWidget(m_view);
  const int digits = std::accumulate(std::begin(kValueWidths), std::end(kValueWidths), 4);
  const int scrollBar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  resize(metrics.horizontalAdvance('0') * digits + scrollBar, metrics.height() * 30);
}

// The same as a click on a header, by keys.
QMenu* CValuesWindow::MakeSortMenu() {
  auto* menu = new QMenu("&Sort By", m_view);
  for (int column = 0; column < CValueTable::columns; ++column)
    connect(menu->addAction('&' + m_model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString()),
            &QAction::triggered, this, [this, column] { SortBy(column); });
  return menu;
}

// By the same column once more: in the other direction.
void CValuesWindow::SortBy(int column) {
  const QHeaderView* header = m_view->horizontalHeader();
  const bool isAgain =
      header->sortIndicatorSection() == column && header->sortIndicatorOrder() == Qt::AscendingOrder;
  m_view->sortByColumn(column, isAgain ? Qt::DescendingOrder : Qt::AscendingOrder);
}

CString CValuesWindow::State() const {
  return TableState(*this, *m_view->horizontalHeader(), {{"search", m_search->text()}});
}

void CValuesWindow::SetState(const CString& state) {
  const QJsonObject fields = UseTableState(state, *this, *m_view->horizontalHeader());
  m_areColumnsFitted = m_areColumnsFitted || fields.contains("columns");
  m_search->setText(fields["search"].toString());
}

void CValuesWindow::SetSource(CValueSource source) {
  m_model->SetSource(std::move(source));
  if (isVisible()) Look();
}

void CValuesWindow::BringUp() {
  isMinimized() ? showNormal() : show();
  raise();
  activateWindow();
}

// A search that was kept can be of the variables of another logger.
void CValuesWindow::showEvent(QShowEvent* event) {
  Look();
  if (m_model->rowCount() == 0 && m_model->Variables() > 0) m_search->clear();
  FitColumns();
  m_timer.start(kLookPeriod);
  QWidget::showEvent(event);
}

void CValuesWindow::hideEvent(QHideEvent* event) {
  m_timer.stop();
  QWidget::hideEvent(event);
}

void CValuesWindow::Look() {
  if (isMinimized() || !m_model->Look()) return;
  const auto now = CValueTable::Time::clock::now();
  if (now >= m_sorted + kSortPeriod) {
    m_model->SortAgain();
    m_sorted = now;
  }
  const int last = m_view->rowAt(m_view->viewport()->height() - 1);
  m_model->ShowRows(std::max(m_view->rowAt(0), 0), last < 0 ? m_model->rowCount() - 1 : last);
  ShowCount();
}

// Short names leave their room to the values, unless the user has chosen the widths.
void CValuesWindow::FitColumns() {
  if (m_areColumnsFitted || m_model->rowCount() == 0) return;
  m_areColumnsFitted = true;
  const QAbstractItemView* view = m_view;
  for (const int column : {CValueTable::columnName, CValueTable::columnNode, CValueTable::columnUnit}) {
    const int needed =
        std::max(view->sizeHintForColumn(column), m_view->horizontalHeader()->sectionSizeHint(column));
    m_view->setColumnWidth(column, std::min(m_view->columnWidth(column), needed));
  }
}

void CValuesWindow::ShowCount() {
  const int shown = m_model->rowCount(), all = m_model->Variables();
  m_count->setText(shown == all ? QString("%1 variables").arg(all)
                                : QString("%1 of %2 variables").arg(shown).arg(all));
}

void CValuesWindow::Search() {
  m_model->Search(m_search->text());
  ShowCount();
}

void CValuesWindow::Copy() {
  const QString lines = m_model->Lines(RowsIn(*m_view));
  if (!lines.isEmpty()) QGuiApplication::clipboard()->setText(lines);
}

void CValuesWindow::Reset() {
  m_model->Reset();
  Look();
}

}  // namespace vastra
