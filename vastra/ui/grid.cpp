#include "vastra/ui/grid.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTableView>

#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kMargin = 3;  // of a text to the edges of its cell, pixels

// Draws a cell: a text on a plain ground, that of column 0 as in a header.
class CCellPainter : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const bool isHeader = index.column() == 0;
    const QPalette& palette = option.palette;
    if (isHeader) painter->fillRect(option.rect, palette.color(QPalette::Button));
    const QString text = index.data().toString();
    if (text.isEmpty()) return;
    painter->setPen(palette.color(isHeader ? QPalette::ButtonText : QPalette::Text));
    painter->setFont(option.font);
    painter->drawText(option.rect.adjusted(kMargin, 0, -kMargin, 0), Qt::AlignVCenter | Qt::AlignLeft, text);
  }
};

QTableView* ViewOf(const CWnd& grid) { return static_cast<QTableView*>(grid.Widget()); }

}  // namespace

// What the toolkit's view asks. Its horizontal header is row 0, its first column is column 0.
class CGXGridWnd::CModel : public QAbstractTableModel {
 public:
  CModel(const CGXGridWnd& grid, QObject* parent) : QAbstractTableModel(parent), m_grid(grid) {}

  int rowCount(const QModelIndex& parent) const override {
    return parent.isValid() ? 0 : static_cast<int>(m_grid.GetRowCount());
  }
  int columnCount(const QModelIndex& parent) const override {
    return parent.isValid() ? 0 : static_cast<int>(m_grid.GetColCount()) + 1;
  }
  QVariant data(const QModelIndex& index, int role) const override {
    return role == Qt::DisplayRole ? TextOf(index.row() + 1, index.column()) : QVariant();
  }
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    return role == Qt::DisplayRole && orientation == Qt::Horizontal ? TextOf(0, section) : QVariant();
  }
  void Reset() {
    beginResetModel();
    endResetModel();
  }

 private:
  QVariant TextOf(int row, int col) const {
    CGXStyle style;
    m_grid.GetStyleRowCol(static_cast<UINT>(row), static_cast<UINT>(col), style);
    return ToScreen(style.text);
  }

  const CGXGridWnd& m_grid;
};

void CGXGridWnd::SubclassDlgItem(const CDialog& dialog, const char* caption) {
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

void CGXGridWnd::Redraw() {
  if (QTableView* view = ViewOf(*this)) view->viewport()->repaint();
}

}  // namespace vastra
