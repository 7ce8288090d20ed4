#include "vastra/ui/grid.h"

#include <QAbstractTableModel>
#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTableView>

#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kMargin = 3;  // between a text and the edges of its cell, pixels

// Draws a cell as text on a plain background, column 0 like a header. The toolkit draws cells that can be
// changed.
class CCellPainter : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    if (index.flags() & (Qt::ItemIsEditable | Qt::ItemIsUserCheckable)) {
      QStyledItemDelegate::paint(painter, option, index);
      return;
    }
    const bool isHeader = index.column() == 0;
    const QPalette& palette = option.palette;
    if (isHeader) painter->fillRect(option.rect, palette.color(QPalette::Button));
    const QString text = index.data().toString();
    if (text.isEmpty()) return;
    painter->setPen(palette.color(isHeader ? QPalette::ButtonText : QPalette::Text));
    painter->setFont(option.font);
    painter->drawText(option.rect.adjusted(kMargin, 0, -kMargin, 0), Qt::AlignVCenter | Qt::AlignLeft, text);
  }

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex&) const override {
    auto* edit = new QLineEdit(parent);
    edit->setFrame(false);
    return edit;
  }

  // A cell that was not changed keeps its value: the editor can show a part of it only.
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
    const auto* edit = static_cast<const QLineEdit*>(editor);
    if (edit->isModified()) model->setData(index, edit->text());
  }
};

QTableView* ViewOf(const CWnd& grid) { return static_cast<QTableView*>(grid.Widget()); }

}  // namespace

// The model of the toolkit's view. Its horizontal header is row 0, its first column is column 0.
class CGXGridWnd::CModel : public QAbstractTableModel {
 public:
  CModel(CGXGridWnd& grid, QObject* parent) : QAbstractTableModel(parent), m_grid(&grid) {}

  int rowCount(const QModelIndex& parent) const override {
    return parent.isValid() ? 0 : Count(&CGXGridWnd::GetRowCount);
  }
  int columnCount(const QModelIndex& parent) const override {
    return parent.isValid() ? 0 : Count(&CGXGridWnd::GetColCount) + 1;
  }
  QVariant data(const QModelIndex& index, int role) const override {
    if (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::CheckStateRole) return {};
    const CGXStyle style = StyleOf(index.row() + 1, index.column());
    const bool isBox = style.control == CGXStyle::checkBox;
    if (role != Qt::CheckStateRole) return isBox ? QVariant() : ToScreen(style.text);
    return isBox ? QVariant(style.text == "1" ? Qt::Checked : Qt::Unchecked) : QVariant();
  }
  Qt::ItemFlags flags(const QModelIndex& index) const override {
    static constexpr Qt::ItemFlag kOwn[] = {Qt::NoItemFlags, Qt::ItemIsEditable, Qt::ItemIsUserCheckable};
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable |
           kOwn[m_readOnly ? CGXStyle::fixed : StyleOf(index.row() + 1, index.column()).control];
  }
  bool setData(const QModelIndex& index, const QVariant& value, int role) override {
    const auto row = static_cast<UINT>(index.row()) + 1;
    const auto col = static_cast<UINT>(index.column());
    bool isTaken = true;
    if (!m_grid) return false;
    if (role == Qt::CheckStateRole) {
      m_grid->m_current = value.toInt() == Qt::Checked ? "1" : "0";
      m_grid->OnClickedButtonRowCol(row, col);
    } else {
      m_grid->m_current = FromScreen(value.toString());
      isTaken = m_grid->OnValidateCell(row, col);
    }
    emit dataChanged(index, index);
    return isTaken;
  }
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return {};
    return ToScreen(StyleOf(0, section).text);
  }
  void Reset() {
    beginResetModel();
    endResetModel();
  }

  CGXGridWnd* m_grid;  // null: destroyed before the view
  bool m_readOnly = true;

 private:
  int Count(UINT (CGXGridWnd::*what)() const) const {
    return m_grid ? static_cast<int>((m_grid->*what)()) : 0;
  }
  CGXStyle StyleOf(int row, int col) const {
    CGXStyle style;
    if (m_grid) m_grid->GetStyleRowCol(static_cast<UINT>(row), static_cast<UINT>(col), style);
    return style;
  }
};

CGXGridWnd::~CGXGridWnd() { Leave(); }

// The event loop destroys the view later; until then it gets no data.
void CGXGridWnd::Leave() {
  if (QTableView* view = ViewOf(*this)) static_cast<CModel*>(view->model())->m_grid = nullptr;
  Abandon();
}

void CGXGridWnd::SubclassDlgItem(const CDialog& dialog, const char* caption) {
  Leave();
  auto* view = static_cast<QTableView*>(dialog.Place(caption).Widget());
  Attach(view, view->viewport());
  view->setModel(new CModel(*this, view));
  view->setItemDelegate(new CCellPainter(view));
  view->setSelectionMode(QAbstractItemView::NoSelection);
  view->verticalHeader()->hide();
  view->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  view->horizontalHeader()->setHighlightSections(false);
  view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
}

void CGXGridWnd::Reset() {
  if (QTableView* view = ViewOf(*this)) static_cast<CModel*>(view->model())->Reset();
}

void CGXGridWnd::SetColWidth(UINT col, int pixels) {
  if (QTableView* view = ViewOf(*this)) view->setColumnWidth(static_cast<int>(col), pixels);
}

void CGXGridWnd::SetHeaderHeight(int pixels) {
  if (QTableView* view = ViewOf(*this)) view->horizontalHeader()->setFixedHeight(pixels);
}

void CGXGridWnd::SetFontSize(int points) {
  QTableView* view = ViewOf(*this);
  if (!view) return;
  QFont font = view->font();
  font.setPointSize(points);
  view->setFont(font);
  view->horizontalHeader()->setFont(font);
  view->verticalHeader()->setMinimumSectionSize(1);
  view->verticalHeader()->setDefaultSectionSize(QFontMetrics(font).height() + kMargin);
}

void CGXGridWnd::SetReadOnly(bool readOnly) {
  QTableView* view = ViewOf(*this);
  if (!view) return;
  static_cast<CModel*>(view->model())->m_readOnly = readOnly;
  view->setSelectionMode(readOnly ? QAbstractItemView::NoSelection : QAbstractItemView::SingleSelection);
  view->setEditTriggers(readOnly ? QAbstractItemView::NoEditTriggers : QAbstractItemView::AllEditTriggers);
}

void CGXGridWnd::TransferCurrentCell() {
  QTableView* view = ViewOf(*this);
  QWidget* editor = QApplication::focusWidget();
  if (view && editor && view->viewport()->isAncestorOf(editor)) view->setFocus();  // closes the editor
}

void CGXGridWnd::Redraw() {
  if (QTableView* view = ViewOf(*this)) view->viewport()->repaint();
}

}  // namespace vastra
