#include "vastra/charts/cursor_table.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

#include <cmath>

#include "vastra/ui/focus_ring.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

enum EFigure {
  figureName,
  figureA,
  figureB,
  figureDifference,
  figureMin,
  figureMax,
  figureMean,
  figureCount
};
constexpr const char* kFigureCaptions[] = {"Variable", "A", "B", "B - A", "Min", "Max", "Mean", "Values"};

// The exact value if it is known, else that of the picture.
CValueAt ValueOf(const CChartState& state, const CCursorFigures& figures, std::size_t curve,
                 std::size_t cursor) {
  CValueAt at = ValueAt(state.StepsOf(curve), state.CursorAt(cursor));
  if (cursor >= figures.values.size() || curve >= figures.values[cursor].size()) return at;
  at.value = figures.values[cursor][curve];
  at.hasValue = std::isfinite(at.value);
  return at;
}

// Which rows the figures lack, and why; empty: none.
QString MissingText(const std::vector<CHistoryFault>& faults) {
  if (faults.empty()) return {};
  const QString more = faults.size() > 1 ? QString(" (and %1 more)").arg(faults.size() - 1) : QString();
  return "Rows are missing in these figures: " + ToScreen(faults.front().path + ": " + faults.front().fault) +
         more;
}

QString NumberOf(double value) { return ToScreen(ResultText(value)); }

}  // namespace

CCursorTable::CCursorTable(QWidget* parent)
    : QWidget(parent),
      m_times(new QLabel(this)),
      m_missing(new QLabel(this)),
      m_table(new QTableWidget(this)) {
  for (QLabel* label : {m_times, m_missing}) {
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
  }
  m_times->setAccessibleName("Times of the cursors");
  m_missing->setAccessibleName("Missing rows");
  m_missing->hide();
  m_table->setAccessibleName("Cursors");
  RingOnFocus(*m_table);
  m_table->setColumnCount(static_cast<int>(std::size(kFigureCaptions)));
  m_table->setHorizontalHeaderLabels({std::begin(kFigureCaptions), std::end(kFigureCaptions)});
  m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
  m_table->setShowGrid(false);
  m_table->setWordWrap(false);
  m_table->setTabKeyNavigation(false);
  m_table->verticalHeader()->hide();
  m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  m_table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + fontMetrics().height() / 3);
  m_table->horizontalHeader()->setHighlightSections(false);
  m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignRight | Qt::AlignVCenter);
  m_table->setColumnWidth(figureName, fontMetrics().averageCharWidth() * 20);
  m_table->horizontalHeader()->setStretchLastSection(true);
  m_table->horizontalHeaderItem(figureName)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  for (int column = figureA; column <= figureCount; ++column)
    m_table->setColumnWidth(column, fontMetrics().averageCharWidth() * 13);
  auto* copy = new QAction("&Copy", m_table);
  copy->setShortcut(QKeySequence::Copy);
  copy->setShortcutContext(Qt::WidgetShortcut);
  connect(copy, &QAction::triggered, this, [this] { QGuiApplication::clipboard()->setText(Text()); });
  m_table->addAction(copy);
  m_table->setContextMenuPolicy(Qt::ActionsContextMenu);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(m_times);
  layout->addWidget(m_missing);
  layout->addWidget(m_table, 1);
}

void CCursorTable::Show(const CChartState& state, const CCursorFigures& figures) {
  const CChartClock clock = state.Clock();
  const CMoment a = state.CursorAt(0), b = state.CursorAt(1);
  m_times->setText(
      ToScreen("A " + clock.Text(a) + "     B " + clock.Text(b) + "     B - A " + SpanText(b - a)));
  m_missing->setText(MissingText(figures.faults));
  m_missing->setVisible(!figures.faults.empty());
  m_table->setRowCount(static_cast<int>(state.Layout().curves.size()));
  for (int row = 0; row < m_table->rowCount(); ++row) ShowRow(row, state, figures);
  WidenColumns();
}

// A number that is cut at its end, as -9.5031e-..., can be read as another one.
void CCursorTable::WidenColumns() {
  for (int column = figureA; column <= figureCount; ++column) {
    const int width = static_cast<QAbstractItemView*>(m_table)->sizeHintForColumn(column);
    if (width > m_table->columnWidth(column)) m_table->setColumnWidth(column, width);
  }
}

void CCursorTable::ShowRow(int row, const CChartState& state, const CCursorFigures& figures) {
  const auto curve = static_cast<std::size_t>(row);
  const CValueAt a = ValueOf(state, figures, curve, 0), b = ValueOf(state, figures, curve, 1);
  SetCell(row, figureName, ToScreen(state.Caption(state.Layout().curves[curve])));
  SetCell(row, figureA, ToScreen(ValueText(a)));
  SetCell(row, figureB, ToScreen(ValueText(b)));
  const bool hasBoth = a.hasValue && b.hasValue;
  SetCell(row, figureDifference,
          hasBoth ? NumberOf(static_cast<double>(b.value) - static_cast<double>(a.value)) : QString());
  const bool isKnown = curve < figures.between.size();
  const CCurveStatistics between = isKnown ? figures.between[curve] : CCurveStatistics();
  SetCell(row, figureMin, between.values ? ToScreen(ValueText({true, false, between.least})) : QString());
  SetCell(row, figureMax, between.values ? ToScreen(ValueText({true, false, between.greatest})) : QString());
  SetCell(row, figureMean, between.values ? NumberOf(between.mean) : QString());
  SetCell(row, figureCount, isKnown ? QString::number(between.values) : QString("..."));
}

void CCursorTable::SetCell(int row, int column, const QString& text) {
  QTableWidgetItem* item = m_table->item(row, column);
  if (!item) {
    item = new QTableWidgetItem;
    item->setTextAlignment((column == figureName ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
    m_table->setItem(row, column, item);
  }
  if (item->text() != text) item->setText(text);
}

QString CCursorTable::Text() const {
  QString text = m_times->text() + '\n';
  if (!m_missing->text().isEmpty()) text += m_missing->text() + '\n';
  QStringList captions;
  for (const char* caption : kFigureCaptions) captions << caption;
  text += captions.join('\t') + '\n';
  for (int row = 0; row < m_table->rowCount(); ++row) {
    QStringList cells;
    for (int column = 0; column < m_table->columnCount(); ++column)
      cells << m_table->item(row, column)->text();
    text += cells.join('\t') + '\n';
  }
  return text;
}

}  // namespace vastra
