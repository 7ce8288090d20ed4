#include "host/desktop/check_window.h"

#include <QAction>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHeaderView>
#include <QJsonArray>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "host/desktop/condition_icon.h"
#include "host/desktop/workspace.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

enum ECheckColumn { columnKind, columnPlace, columnText };

CString DetailsOf(const CCheckEntry& entry) {
  return entry.Line() + (entry.detail.IsEmpty() ? CString() : "\n\n" + entry.detail);
}

}  // namespace

CCheckWindow::CCheckWindow(CListener listener, QWidget* parent)
    : QDialog(parent), m_listener(std::move(listener)) {
  setWindowTitle("Check");
  m_verdict = new QLabel(this);
  m_verdict->setWordWrap(true);
  m_verdict->setTextFormat(Qt::PlainText);
  m_verdict->setAccessibleName("Verdict");
  m_list = new QTreeWidget(this);
  m_details = new QPlainTextEdit(this);
  m_details->setReadOnly(true);
  m_details->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  m_details->setTabChangesFocus(true);
  m_details->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  m_details->setAccessibleName("Details");
  RingOnFocus(*m_details);
  m_details->setFixedHeight(m_details->fontMetrics().lineSpacing() * 6);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(m_verdict);
  layout->addWidget(m_list, 1);
  layout->addWidget(m_details);
  MakeList();
  MakeButtons();
  const QSize screen = QGuiApplication::primaryScreen()->availableSize();
  resize(QSize(fontMetrics().averageCharWidth() * 130, fontMetrics().height() * 24).boundedTo(screen * 0.9));
}

void CCheckWindow::MakeList() {
  m_list->setAccessibleName("Findings");
  RingOnFocus(*m_list);
  m_list->setHeaderLabels({"Kind", "Where", "What"});
  m_list->setRootIsDecorated(false);
  m_list->setUniformRowHeights(true);
  m_list->setAllColumnsShowFocus(true);
  m_list->header()->setStretchLastSection(true);
  connect(m_list, &QTreeWidget::itemDoubleClicked, this, [this] { GoThere(); });
  connect(m_list, &QTreeWidget::currentItemChanged, this, [this] { ShowDetails(); });
  auto* copy = new QAction("&Copy", m_list);
  copy->setShortcut(QKeySequence::Copy);
  copy->setShortcutContext(Qt::WidgetShortcut);
  connect(copy, &QAction::triggered, this, [this] {
    QString lines;
    for (const CCheckEntry& entry : m_entries) lines += ToScreen(DetailsOf(entry)) + "\n";
    QGuiApplication::clipboard()->setText(lines);
  });
  // The key is taken before the dialog gives it to its default button.
  auto* open = new QAction("&Go There", m_list);
  open->setShortcuts({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
  open->setShortcutContext(Qt::WidgetShortcut);
  connect(open, &QAction::triggered, this, [this] { GoThere(); });
  m_list->addActions({open, copy});
  m_list->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void CCheckWindow::MakeButtons() {
  auto* buttons = new QDialogButtonBox(this);
  const auto add = [&](const char* text, auto action) {
    QPushButton* button = buttons->addButton(text, QDialogButtonBox::ActionRole);
    connect(button, &QPushButton::clicked, this, action);
    return button;
  };
  m_start = add("&Start Anyway", [this] { Start(); });
  m_open = add("&Go There", [this] { GoThere(); });
  m_again = add("Check &Again", [this] { m_listener.check(); });
  buttons->addButton(QDialogButtonBox::Close);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
  layout()->addWidget(buttons);
}

void CCheckWindow::SetEntries(std::vector<CCheckEntry> entries, bool asksToStart) {
  m_entries = std::move(entries);
  m_asksToStart = asksToStart;
  QString verdict = ToScreen(Verdict(m_entries));
  if (CanStart()) verdict += " It has not been started yet.";
  m_verdict->setText(verdict);
  m_start->setText(m_entries.empty() ? "&Start" : "&Start Anyway");
  m_start->setVisible(CanStart());
  FillList();
}

// Keeps the current row.
void CCheckWindow::FillList() {
  const int current = std::max(0, m_list->indexOfTopLevelItem(m_list->currentItem()));
  m_list->clear();
  for (const CCheckEntry& entry : m_entries) {
    auto* item = new QTreeWidgetItem(
        m_list, {entry.isError ? "Error" : "Warning", ToScreen(entry.place), ToScreen(entry.text)});
    item->setIcon(columnKind, IconOf(entry.isError ? ECondition::failed : ECondition::away));
    item->setToolTip(columnPlace, item->text(columnPlace));
    item->setToolTip(columnText, item->text(columnText));
  }
  const int last = m_list->topLevelItemCount() - 1;
  m_list->setCurrentItem(last < 0 ? nullptr : m_list->topLevelItem(std::min(current, last)));
  m_list->setEnabled(last >= 0);
  for (const int column : {columnKind, columnPlace}) m_list->resizeColumnToContents(column);
  m_list->setColumnWidth(columnPlace, std::min(m_list->columnWidth(columnPlace), width() * 2 / 5));
  ShowDetails();
}

void CCheckWindow::BringUp() {
  show();
  raise();
  activateWindow();
  if (CanStart()) return m_start->setFocus();
  m_list->isEnabled() ? m_list->setFocus() : m_again->setFocus();
}

void CCheckWindow::ShowDetails() {
  const int row = m_list->indexOfTopLevelItem(m_list->currentItem());
  m_open->setEnabled(row >= 0);
  m_details->setPlainText(row < 0 ? QString()
                                  : ToScreen(DetailsOf(m_entries[static_cast<std::size_t>(row)])));
}

void CCheckWindow::GoThere() {
  const int row = m_list->indexOfTopLevelItem(m_list->currentItem());
  if (row >= 0) m_listener.open(m_entries[static_cast<std::size_t>(row)].key);
}

void CCheckWindow::Start() {
  for (const CCheckEntry& entry : m_entries) m_accepted.insert(entry.Line());
  close();
  m_listener.start();
}

bool CCheckWindow::AreAccepted(const std::vector<CCheckEntry>& entries) const {
  return std::ranges::all_of(entries, [&](const CCheckEntry& entry) {
    return !entry.isError && (entry.isHarmless || m_accepted.contains(entry.Line()));
  });
}

CString CCheckWindow::Accepted() const {
  if (m_accepted.empty()) return {};
  QJsonArray lines;
  for (const CString& line : m_accepted) lines.append(ToScreen(line));
  return StateText({{"lines", lines}});
}

void CCheckWindow::SetAccepted(const CString& accepted) {
  m_accepted.clear();
  for (const QJsonValue line : StateFields(accepted)["lines"].toArray())
    m_accepted.insert(FromScreen(line.toString()));
}

void CCheckWindow::Forget() {
  m_accepted.clear();
  close();
}

}  // namespace vastra
