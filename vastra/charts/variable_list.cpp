#include "vastra/charts/variable_list.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <set>

#include "vastra/ui/focus_ring.h"
#include "vastra/ui/search_field.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kNameRole = Qt::UserRole;       // the name of the variable
constexpr int kWordsRole = Qt::UserRole + 1;  // what the search looks at

class CVariableTree : public QTreeWidget {
 public:
  using QTreeWidget::QTreeWidget;

 protected:
  QStringList mimeTypes() const override { return {"text/plain"}; }
  QMimeData* mimeData(const QList<QTreeWidgetItem*>& items) const override {
    QStringList names;
    for (const QTreeWidgetItem* item : items)
      if (const QString name = item->data(0, kNameRole).toString(); !name.isEmpty()) names << name;
    if (names.isEmpty()) return nullptr;
    auto* dragged = new QMimeData;
    dragged->setText(names.join('\n'));
    return dragged;
  }
};

// A short line of a colour; empty for a variable that has no curve, so that all names are aligned.
QIcon LineIcon(std::optional<unsigned> colour, int size, double ratio) {
  QPixmap image(QSizeF(size * ratio, size * ratio).toSize());
  image.setDevicePixelRatio(ratio);
  image.fill(Qt::transparent);
  if (colour) {
    QPainter painter(&image);
    painter.setPen(QPen(QColor::fromRgb(*colour), 3, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(QPointF(1, size / 2.0), QPointF(size - 1, size / 2.0));
  }
  QIcon icon(image);
  icon.addPixmap(image, QIcon::Selected);
  return icon;
}

bool HasAllWords(const QString& text, const QStringList& words) {
  return std::ranges::all_of(words, [&](const QString& word) { return text.contains(word); });
}

}  // namespace

CVariableList::CVariableList(std::function<void(const std::vector<CString>&)> choose, QWidget* parent)
    : QWidget(parent),
      m_choose(std::move(choose)),
      m_search(NewSearchField("Search", this)),
      m_tree(new CVariableTree(this)),
      m_count(new QLabel(this)) {
  m_search->setToolTip("Words of a variable or a node (Ctrl+F)");
  m_tree->setAccessibleName("Variables");
  RingOnFocus(*m_tree);
  m_tree->setHeaderHidden(true);
  m_tree->setTextElideMode(Qt::ElideMiddle);  // the ends of long names differ
  m_tree->setUniformRowHeights(true);
  m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
  m_tree->setDragEnabled(true);
  m_tree->setDragDropMode(QAbstractItemView::DragOnly);
  m_tree->setIndentation(fontMetrics().averageCharWidth() * 2);
  m_tree->setExpandsOnDoubleClick(false);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(m_search);
  layout->addWidget(m_tree, 1);
  layout->addWidget(m_count);
  connect(m_search, &QLineEdit::textChanged, this, [this] { Search(); });
  m_search->installEventFilter(this);
  connect(m_search, &QLineEdit::returnPressed, this, [this] { FocusList(); });
  connect(m_tree, &QTreeWidget::itemActivated, this, [this] { ChooseSelected(); });
}

void CVariableList::SetVariables(const std::vector<CString>& variables,
                                 const std::vector<CListedNode>& groups) {
  if (variables == m_variables && groups == m_groups) return;
  m_variables = variables;
  m_groups = groups;
  Fill();
}

std::vector<CString> CVariableList::Variables() const {
  std::vector<CString> names;
  for (const QTreeWidgetItem* item : m_items)
    names.push_back(FromScreen(item->data(0, kNameRole).toString()));
  return names;
}

void CVariableList::SetUnits(const std::map<CString, CString>& units) {
  m_units = units;
  for (QTreeWidgetItem* item : m_items) ShowItem(*item);
}

void CVariableList::SetComments(const std::map<CString, CString>& comments) {
  m_comments = comments;
  for (QTreeWidgetItem* item : m_items) ShowItem(*item);
}

void CVariableList::Mark(const std::map<CString, unsigned>& colours) {
  if (colours == m_marks) return;
  m_marks = colours;
  for (QTreeWidgetItem* item : m_items) ShowItem(*item);
}

void CVariableList::Fill() {
  m_tree->clear();
  m_items.clear();
  const std::set<CString> known(m_variables.begin(), m_variables.end());
  std::set<CString> grouped;
  for (const CListedNode& group : m_groups) {
    QTreeWidgetItem* parent = nullptr;
    for (const CString& variable : group.variables) {
      if (!known.contains(variable) || !grouped.insert(variable).second) continue;
      if (!parent) {
        parent = new QTreeWidgetItem(m_tree, {ToScreen(group.name)});
        parent->setFlags(Qt::ItemIsEnabled);
        parent->setExpanded(true);
      }
      AddItem(parent, variable);
    }
  }
  QTreeWidgetItem* rest = nullptr;
  for (const CString& variable : m_variables) {
    if (grouped.contains(variable)) continue;
    if (!rest && !grouped.empty()) {
      rest = new QTreeWidgetItem(m_tree, {"Others"});
      rest->setFlags(Qt::ItemIsEnabled);
      rest->setExpanded(true);
    }
    AddItem(rest ? rest : m_tree->invisibleRootItem(), variable);
  }
  m_tree->setRootIsDecorated(!grouped.empty());
  Search();
}

void CVariableList::AddItem(QTreeWidgetItem* parent, const CString& variable) {
  auto* item = new QTreeWidgetItem(parent);
  item->setData(0, kNameRole, ToScreen(variable));
  const QString node = parent == m_tree->invisibleRootItem() ? QString() : parent->text(0);
  item->setData(0, kWordsRole, (ToScreen(variable) + '\n' + node).toCaseFolded());
  item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren);
  m_items.push_back(item);
  ShowItem(*item);
}

void CVariableList::ShowItem(QTreeWidgetItem& item) {
  const QString name = item.data(0, kNameRole).toString();
  const CString variable = FromScreen(name);
  const auto unit = m_units.find(variable), comment = m_comments.find(variable);
  const auto mark = m_marks.find(variable);
  item.setText(0, unit == m_units.end() ? name : name + " [" + ToScreen(unit->second) + "]");
  item.setToolTip(
      0, comment == m_comments.end() ? item.text(0) : item.text(0) + "\n" + ToScreen(comment->second));
  item.setIcon(0, LineIcon(mark == m_marks.end() ? std::nullopt : std::optional(mark->second),
                           fontMetrics().height(), devicePixelRatioF()));
  item.setData(0, Qt::AccessibleDescriptionRole, mark == m_marks.end() ? "" : "in the chart");
}

// Nodes without a variable that matches are hidden, too.
void CVariableList::Search() {
  const QStringList words = m_search->text().toCaseFolded().split(' ', Qt::SkipEmptyParts);
  int shown = 0;
  std::set<QTreeWidgetItem*> parents;
  for (QTreeWidgetItem* item : m_items) {
    const bool matches = HasAllWords(item->data(0, kWordsRole).toString(), words);
    item->setHidden(!matches);
    if (!matches) item->setSelected(false);
    if (matches && item->parent()) parents.insert(item->parent());
    shown += matches;
  }
  for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
    QTreeWidgetItem* item = m_tree->topLevelItem(i);
    if (item->childCount() > 0) item->setHidden(!parents.contains(item));
  }
  ShowCount(shown);
}

void CVariableList::ShowCount(int shown) {
  const auto all = static_cast<int>(m_items.size());
  m_count->setText(shown == all ? QString("%1 variables").arg(all)
                                : QString("%1 of %2 variables").arg(shown).arg(all));
}

void CVariableList::ChooseSelected() {
  std::vector<CString> names;
  for (const QTreeWidgetItem* item : m_items)
    if (item->isSelected() && !item->isHidden())
      names.push_back(FromScreen(item->data(0, kNameRole).toString()));
  if (!names.empty()) m_choose(names);
}

// The first variable is chosen, not its node, so that the next Enter shows it.
void CVariableList::FocusList() {
  m_tree->setFocus(Qt::OtherFocusReason);
  if (!m_tree->selectedItems().isEmpty()) return;
  const auto first = std::ranges::find_if(m_items, [](const auto* item) { return !item->isHidden(); });
  if (first != m_items.end()) m_tree->setCurrentItem(*first);
}

int CVariableList::BestWidth() const {
  const QAbstractItemView* view = m_tree;
  return view->sizeHintForColumn(0) + 2 * m_tree->frameWidth() +
         m_tree->verticalScrollBar()->sizeHint().width();
}

bool CVariableList::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Down)
    return QWidget::eventFilter(watched, event);
  FocusList();
  return true;
}

void CVariableList::FocusSearch() {
  m_search->setFocus(Qt::ShortcutFocusReason);
  m_search->selectAll();
}

}  // namespace vastra
