#include "host/desktop/plant_view.h"

#include <QDesktopServices>
#include <QEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QJsonArray>
#include <QMenu>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

#include "host/desktop/condition_icon.h"
#include "host/desktop/problem_banner.h"
#include "host/desktop/workspace.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kLookPause{200};

enum EPlantColumn { plantPart, plantState, plantValue, plantRows, plantFiles, plantWhat };

// By EPlantColumn: the heading, the text of a row, and the width in characters.
struct CPlantColumn {
  const char* heading;
  CString CPlantRow::*text;
  int width;
};
constexpr CPlantColumn kPlantColumns[] = {{"Part", &CPlantRow::name, 18},
                                          {"State", &CPlantRow::state, 44},
                                          {"Last value", &CPlantRow::lastValue, 12},
                                          {"Rows", &CPlantRow::rows, 9},
                                          {"Files", &CPlantRow::files, 34},
                                          {"What it does", &CPlantRow::what, 30}};

const QIcon& CachedIcon(ECondition condition) {
  static const QIcon kIcons[] = {IconOf(ECondition::off), IconOf(ECondition::good),
                                 IconOf(ECondition::waiting), IconOf(ECondition::away),
                                 IconOf(ECondition::failed)};
  return kIcons[static_cast<std::size_t>(condition)];
}

}  // namespace

CPlantView::CPlantView(CListener listener, QWidget* parent)
    : QWidget(parent), m_listener(std::move(listener)) {
  m_banner = new CProblemBanner(
      [this](const CString& identity) {
        m_state.Acknowledge(identity);
        Look();
      },
      this);
  MakeTree();
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(m_banner);
  layout->addWidget(m_tree, 1);
  connect(&m_timer, &QTimer::timeout, this, [this] { LookIfSeen(); });
  m_timer.start(kLookPause);
  ShowHint();
}

void CPlantView::MakeTree() {
  m_tree = new QTreeWidget(this);
  QStringList headings;
  for (const CPlantColumn& column : kPlantColumns) headings << column.heading;
  m_tree->setHeaderLabels(headings);
  m_tree->setAccessibleName("Plant");
  RingOnFocus(*m_tree);
  m_tree->setAllColumnsShowFocus(true);
  m_tree->setUniformRowHeights(true);
  m_tree->setExpandsOnDoubleClick(false);
  for (int i = 0; const CPlantColumn& column : kPlantColumns)
    m_tree->setColumnWidth(i++, fontMetrics().averageCharWidth() * column.width);
  m_tree->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(m_tree, &QTreeWidget::customContextMenuRequested, this,
          [this](const QPoint& place) { ShowMenu(place); });
  connect(m_tree, &QTreeWidget::itemActivated, this, [this](const QTreeWidgetItem* item) {
    if (const CPlantRow* row = RowOfItem(item)) Edit(*row);
  });
}

// In a narrow window the long texts have dots at first, and a tool tip, so that all columns are in sight.
void CPlantView::FitColumns() {
  if (std::exchange(m_areColumnsFitted, true)) return;
  int missing = m_tree->header()->length() - m_tree->viewport()->width();
  for (const int column : {plantState, plantFiles}) {
    const int width = m_tree->columnWidth(column), taken = std::clamp(missing, 0, width * 2 / 5);
    m_tree->setColumnWidth(column, width - taken);
    missing -= taken;
  }
}

// A view in which nothing can be edited is of a logger that runs elsewhere.
void CPlantView::ShowHint() {
  const char* text = m_listener.edit ? "Nothing is open: File > New Logger leads to a first logger, "
                                       "File > Open reads a configuration"
                                     : "The parts of the logger appear when it answers";
  auto* hint = new QTreeWidgetItem(m_tree, {text});
  hint->setFirstColumnSpanned(true);
  hint->setToolTip(plantPart, hint->text(plantPart).toHtmlEscaped());
}

// The items stay, with their selection and expansion, if the parts are the same.
void CPlantView::ShowConfiguration(const CConfiguration& configuration, int inputVariables) {
  m_state.SetConfiguration(configuration, inputVariables);
  if (m_items.empty() || !AreSameParts(m_state.Rows(), m_shown)) FillTree();
  Look();
}

void CPlantView::FillTree() {
  m_tree->clear();
  m_items.clear();
  QTreeWidgetItem* stage = nullptr;
  for (const CPlantRow& row : m_state.Rows()) {
    auto* item = row.IsChild() ? new QTreeWidgetItem(stage) : new QTreeWidgetItem(m_tree);
    if (!row.IsChild()) stage = item, stage->setExpanded(true);
    item->setTextAlignment(plantRows, Qt::AlignRight | Qt::AlignVCenter);
    m_items.push_back(item);
  }
  m_shown.clear();
}

void CPlantView::ShowTrend(const CTrendConfig& trend) {
  m_state.SetTrend(trend);
  Look();
}

void CPlantView::ShowRun(const CPlantRun& run, std::shared_ptr<const CLiveState> live) {
  m_run = run;
  if (live != m_live) m_newest = {}, m_live = std::move(live);
  Look();
}

CString CPlantView::State() const {
  QJsonArray closed;
  for (const QTreeWidgetItem* item : m_items)
    if (item->childCount() > 0 && !item->isExpanded()) closed.append(item->text(plantPart));
  return StateText({{"columns", BytesField(m_tree->header()->saveState())}, {"closed", closed}});
}

void CPlantView::SetState(const CString& state) {
  const QJsonObject fields = StateFields(state);
  if (m_tree->header()->restoreState(FieldBytes(fields["columns"]))) m_areColumnsFitted = true;
  for (QTreeWidgetItem* item : m_items)
    if (item->childCount() > 0)
      item->setExpanded(!fields["closed"].toArray().contains(item->text(plantPart)));
}

void CPlantView::LookIfSeen() {
  if (isVisible() && !window()->isMinimized()) Look();
}

void CPlantView::Look() {
  if (m_items.empty() || !m_live || !m_live->CopyNewest(m_newest)) return;
  CPlantNow now = {std::chrono::steady_clock::now(), {}};
  _ftime(now.wall);
  m_state.Look(m_run, m_newest, now);
  ShowRows();
  m_banner->Show(m_state.Problems());
}

void CPlantView::ShowRows() {
  const std::vector<CPlantRow>& rows = m_state.Rows();
  const bool isFirst = m_shown.size() != rows.size();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (isFirst) m_items[i]->setIcon(plantState, CachedIcon(rows[i].condition));
    ShowRow(*m_items[i], rows[i], isFirst ? CPlantRow() : m_shown[i]);
  }
  m_shown = rows;
  if (isFirst) m_tree->resizeColumnToContents(plantPart);
}

// Sets what differs from shown. The tool tip has what the column may be too narrow for.
void CPlantView::ShowRow(QTreeWidgetItem& item, const CPlantRow& row, const CPlantRow& shown) {
  for (int i = 0; const CPlantColumn& column : kPlantColumns) {
    if (row.*column.text != shown.*column.text) {
      item.setText(i, ToScreen(row.*column.text));
      item.setToolTip(i, item.text(i).toHtmlEscaped());
    }
    ++i;
  }
  if (row.condition != shown.condition) item.setIcon(plantState, CachedIcon(row.condition));
  if (row.isStale == shown.isStale) return;
  const QBrush grey = palette().brush(QPalette::Disabled, QPalette::Text);
  item.setData(plantValue, Qt::ForegroundRole, row.isStale ? QVariant(grey) : QVariant());
}

const CPlantRow* CPlantView::RowOfItem(const QTreeWidgetItem* item) const {
  for (std::size_t i = 0; i < m_items.size(); ++i)
    if (m_items[i] == item) return &m_state.Rows()[i];
  return nullptr;
}

// The variables of the trend are chosen in its own window.
void CPlantView::Edit(const CPlantRow& row) {
  if (row.part == EPart::trend) return m_listener.trend();
  if (m_listener.edit) m_listener.edit(row.Key());
}

void CPlantView::ShowMenu(const QPoint& place) {
  const QTreeWidgetItem* item = m_tree->itemAt(place);
  const CPlantRow* row = RowOfItem(item ? item : m_tree->currentItem());
  if (!row) return;
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  const EPart part = row->part;
  const QString folder = QFileInfo(ToScreen(row->folder)).absoluteFilePath();
  if (m_listener.edit && part != EPart::trend)
    menu->addAction("&Edit...", this, [this, key = row->Key()] { m_listener.edit(key); });
  if (!row->folder.IsEmpty())
    menu->addAction("Open &Folder", this,
                    [folder] { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); });
  if (const int index = row->index; part == EPart::output || part == EPart::summary)
    menu->addAction("Show &History", this, [this, part, index] { m_listener.history(part, index); });
  menu->addSeparator();
  menu->addAction("Show &Trend", this, [this] { m_listener.trend(); });
  menu->addAction("Show Scan &Grid", this, [this] { m_listener.grid(); });
  menu->addAction("Show &Values", this, [this] { m_listener.values(); });
  menu->popup(m_tree->viewport()->mapToGlobal(place));
}

void CPlantView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  QTimer::singleShot(0, this, [this] { FitColumns(); });  // when the list has its width
  Look();
}

void CPlantView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange) m_shown.clear();  // the colours are set again
  QWidget::changeEvent(event);
}

}  // namespace vastra
