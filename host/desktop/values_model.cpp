#include "host/desktop/values_model.h"

#include <QFont>
#include <QGuiApplication>
#include <QMimeData>
#include <QPalette>

#include <set>
#include <utility>

#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr const char* kValueCaptions[] = {"Variable", "Node", "Value", "Unit", "Min", "Max", "Mean", "Age"};
static_assert(std::size(kValueCaptions) == CValueTable::columns);

std::string Folded(const CString& text) { return ToScreen(text).toCaseFolded().toStdString(); }

// A cell of text separated by tabs is in one line and has no tab.
QString InOneCell(QString text) {
  for (const char separator : {'\t', '\n', '\r'}) text.replace(separator, ' ');
  return text;
}

// Between the colours of text and background, so that it can be read in a light and in a dark desktop.
QBrush Grey() {
  constexpr float kText = 0.55F;
  const QColor text = QGuiApplication::palette().text().color();
  const QColor base = QGuiApplication::palette().base().color();
  const auto mixed = [](float a, float b) { return kText * a + (1 - kText) * b; };
  return QColor::fromRgbF(mixed(text.redF(), base.redF()), mixed(text.greenF(), base.greenF()),
                          mixed(text.blueF(), base.blueF()));
}

QFont Italic() {
  QFont font;
  font.setItalic(true);
  return font;
}

}  // namespace

CValuesModel::CValuesModel(QObject* parent) : QAbstractTableModel(parent), m_table(Folded) {}

bool CValuesModel::Look() {
  _timeb clock;
  _ftime(clock);
  const CValueTable::EChange change = m_table.Look(CValueTable::Time::clock::now(), clock);
  if (change != CValueTable::EChange::variables) return change != CValueTable::EChange::none;
  beginResetModel();
  m_table.SetOrder(m_table.Sorted());
  endResetModel();
  return true;
}

void CValuesModel::ShowRows(int first, int last) {
  const std::vector<CShownRow> before = std::exchange(m_shown, {});
  const int firstBefore = std::exchange(m_firstShown, first);
  for (int row = first; row <= last; ++row) {
    m_shown.push_back(RowNow(row));
    const auto place = static_cast<std::size_t>(row - firstBefore);
    Announce(row, row >= firstBefore && place < before.size() ? before[place] : CShownRow(), m_shown.back());
  }
}

CValuesModel::CShownRow CValuesModel::RowNow(int row) const {
  const int variable = VariableOf(index(row, 0));
  CShownRow now = {variable, m_table.IsStale(variable), {}};
  for (int column = CValueTable::columnValue; column < CValueTable::columns; ++column)
    now.texts[column] = Text(variable, column);
  return now;
}

// Texts take most of the time of a view: it draws the cells that are announced one by one alone, and for a
// range of cells all that it shows.
void CValuesModel::Announce(int row, const CShownRow& before, const CShownRow& now) {
  if (before.variable != now.variable || before.isStale != now.isStale) {
    emit dataChanged(index(row, 0), index(row, CValueTable::columns - 1));
    return;
  }
  for (int column = CValueTable::columnValue; column < CValueTable::columns; ++column)
    if (before.texts[column] != now.texts[column]) emit dataChanged(index(row, column), index(row, column));
}

void CValuesModel::SortAgain() {
  if (m_table.IsSortedByValues()) Reorder(m_table.Sorted());
}

void CValuesModel::Search(const QString& words) {
  beginResetModel();
  m_table.SetSearch(FromScreen(words));
  m_table.SetOrder(m_table.Sorted());
  endResetModel();
}

void CValuesModel::sort(int column, Qt::SortOrder order) {
  m_table.SetSort(column, order == Qt::DescendingOrder);
  Reorder(m_table.Sorted());
}

// order has the variables of the present rows.
void CValuesModel::Reorder(std::vector<int> order) {
  if (order == m_table.Order()) return;
  emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const QModelIndexList former = persistentIndexList();
  std::vector<int> rows(static_cast<std::size_t>(m_table.Variables()));
  for (std::size_t row = 0; row < order.size(); ++row)
    rows[static_cast<std::size_t>(order[row])] = static_cast<int>(row);
  QModelIndexList now;
  for (const QModelIndex& cell : former)
    now << index(rows[static_cast<std::size_t>(VariableOf(cell))], cell.column());
  m_table.SetOrder(std::move(order));
  changePersistentIndexList(former, now);
  emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

QString CValuesModel::Lines(const QModelIndexList& rows) const {
  QString lines;
  for (const QModelIndex& row : rows) {
    QStringList cells;
    for (int column = 0; column < CValueTable::columns; ++column)
      cells << InOneCell(Text(VariableOf(row), column));
    lines += cells.join('\t') + '\n';
  }
  return lines;
}

int CValuesModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(m_table.Order().size());
}

int CValuesModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : CValueTable::columns;
}

int CValuesModel::VariableOf(const QModelIndex& index) const {
  return m_table.Order()[static_cast<std::size_t>(index.row())];
}

QString CValuesModel::Text(int variable, int column) const {
  return ToScreen(m_table.Text(variable, column));
}

// A stale value is grey and italic, and its age begins with the reason.
QVariant CValuesModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const int variable = VariableOf(index), column = index.column();
  switch (role) {
    case Qt::DisplayRole:
      return Text(variable, column);
    case Qt::TextAlignmentRole:
      return QVariant(Qt::AlignVCenter |
                      (column < CValueTable::columnValue || column == CValueTable::columnUnit
                           ? Qt::AlignLeft
                           : Qt::AlignRight));
    case Qt::ToolTipRole:
      return ToScreen(m_table.Hint(variable));
    case Qt::FontRole:
      return m_table.IsStale(variable) ? Italic() : QVariant();
    case Qt::ForegroundRole:
      return m_table.IsStale(variable) ? Grey() : QVariant();
    default:
      return {};
  }
}

QVariant CValuesModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Horizontal && role == Qt::DisplayRole) return kValueCaptions[section];
  return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags CValuesModel::flags(const QModelIndex& index) const {
  return QAbstractTableModel::flags(index) | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
}

QMimeData* CValuesModel::mimeData(const QModelIndexList& indexes) const {
  std::set<int> rows;
  for (const QModelIndex& cell : indexes) rows.insert(cell.row());
  QStringList names;
  for (const int row : rows) names << Text(VariableOf(index(row, 0)), CValueTable::columnName);
  auto* data = new QMimeData;
  data->setText(names.join('\n'));
  return data;
}

}  // namespace vastra
