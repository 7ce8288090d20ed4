#include "host/desktop/message_window.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

#include "host/desktop/workspace.h"
#include "vastra/ui/elided_label.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/search_field.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

struct CSeverityChoice {
  const char* text;
  char severity;
};
constexpr CSeverityChoice kSeverityChoices[] = {
    {"All messages", severityNotice}, {"Warnings and errors", severityWarning}, {"Errors", severityError}};

// The widths of the columns before the user has changed them, in digits; the text has the rest.
constexpr int kColumnWidths[] = {24, 11, 14, 0, 6};
constexpr int kDetailLines = 3;

QPushButton* ButtonOf(QAction* action, QWidget* parent) {
  auto* button = new QPushButton(action->text(), parent);
  button->setAutoDefault(false);
  button->setToolTip(action->toolTip());
  QObject::connect(button, &QPushButton::clicked, action, &QAction::trigger);
  return button;
}

QString CountedMessages(std::size_t count) {
  return QString::number(count) + (count == 1 ? " message" : " messages");
}

}  // namespace

CMessageWindow::CMessageWindow(CSettings& settings, const char* setting, CMessageModel& model,
                               COpenPlace openPlace)
    : m_settings(settings),
      m_setting(setting),
      m_model(model),
      m_openPlace(std::move(openPlace)),
      m_severity(new QComboBox(this)),
      m_words(NewSearchField("Words to find", this)),
      m_table(new QTableView(this)),
      m_details(new QPlainTextEdit(this)),
      m_follow(new QCheckBox("&Follow", this)),
      m_status(NewElidedLabel(this)) {
  setWindowTitle("Message Log");
  for (const CSeverityChoice& choice : kSeverityChoices) m_severity->addItem(choice.text);
  MakeTable();
  MakeActions();
  MakeLayout();
  resize(m_table->fontMetrics().averageCharWidth() * 150, m_table->fontMetrics().height() * 26);
  SetState(m_settings.Get(m_setting));
  m_follow->setChecked(true);
  FollowModel();
  ShowStatus();
}

CMessageWindow::~CMessageWindow() { Remember(); }

void CMessageWindow::MakeTable() {
  m_table->setModel(&m_model);
  m_table->setAccessibleName("Messages");
  RingOnFocus(*m_table);
  RingOnFocus(*m_details);
  m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
  m_table->setWordWrap(false);
  m_table->setTabKeyNavigation(false);
  m_table->setShowGrid(false);
  m_table->setAlternatingRowColors(true);
  m_table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  m_table->verticalHeader()->hide();
  m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 6);
  m_table->horizontalHeader()->setHighlightSections(false);
  m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  for (int column = 0; column < CMessageModel::columns; ++column)
    m_table->setColumnWidth(column, m_table->fontMetrics().horizontalAdvance('0') * kColumnWidths[column]);
  m_table->horizontalHeader()->setSectionResizeMode(CMessageModel::textColumn, QHeaderView::Stretch);
}

void CMessageWindow::MakeActions() {
  const auto add = [this](const char* text, const char* tip, const QKeySequence& key, auto operation) {
    auto* action = new QAction(text, this);
    action->setToolTip(tip);
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetShortcut);  // of the table, which shows the actions as its menu
    connect(action, &QAction::triggered, this, operation);
    m_table->addAction(action);
    return action;
  };
  m_open = add("&Open Place", "Open the part of the configuration that the message is about", Qt::Key_Return,
               [this] { OpenPlace(); });
  m_open->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
  m_copy = add("&Copy", "Copy the selected messages", QKeySequence::Copy, [this] { Copy(); });
  m_clear = add("C&lear", "Empty this window; the messages stay on the disk until the next start", {},
                [this] { m_model.Clear(); });
  m_table->setContextMenuPolicy(Qt::ActionsContextMenu);
  connect(m_table, &QTableView::doubleClicked, m_open, &QAction::trigger);
  connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, m_words, [this] {
    m_words->setFocus(Qt::ShortcutFocusReason);
    m_words->selectAll();
  });
  const auto addSearch = [this](const QKeySequence& key, int step) {
    connect(new QShortcut(key, this), &QShortcut::activated, this, [this, step] { Search(step); });
  };
  addSearch(Qt::Key_F3, 1);
  addSearch(Qt::SHIFT | Qt::Key_F3, -1);
  m_open->setVisible(m_openPlace != nullptr);
  if (m_openPlace) connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);
}

void CMessageWindow::MakeLayout() {
  auto* next = new QPushButton("&Next", this);
  auto* previous = new QPushButton("&Previous", this);
  connect(next, &QPushButton::clicked, this, [this] { Search(1); });
  connect(previous, &QPushButton::clicked, this, [this] { Search(-1); });
  connect(m_words, &QLineEdit::returnPressed, this, [this] { Search(1); });
  m_severity->setAccessibleName("Severity");
  m_details->setAccessibleName("Details");
  m_details->setReadOnly(true);
  m_details->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  m_details->setTabChangesFocus(true);
  m_details->setPlaceholderText("The chosen message");
  m_details->setFixedHeight(m_details->fontMetrics().lineSpacing() * kDetailLines + 12);
  auto* severityLabel = new QLabel("&Show:", this);
  severityLabel->setBuddy(m_severity);
  auto* wordsLabel = new QLabel("S&earch:", this);
  wordsLabel->setBuddy(m_words);
  auto* top = new QHBoxLayout;
  for (QWidget* widget : std::initializer_list<QWidget*>{severityLabel, m_severity, wordsLabel})
    top->addWidget(widget);
  top->addWidget(m_words, 1);
  for (QPushButton* button : {previous, next}) button->setAutoDefault(false), top->addWidget(button);
  auto* bottom = new QHBoxLayout;
  bottom->addWidget(m_follow);
  bottom->addWidget(m_status, 1);
  for (QAction* action : {m_open, m_copy, m_clear})
    if (action->isVisible()) bottom->addWidget(ButtonOf(action, this));
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(m_table);
  layout->addWidget(m_details);
  layout->addLayout(bottom);
}

// Keeps the newest line in sight, or the lines that the user reads.
void CMessageWindow::FollowModel() {
  QScrollBar* bar = m_table->verticalScrollBar();
  const auto changed = [this] {
    Follow();
    ShowStatus();
  };
  connect(&m_model, &QAbstractItemModel::rowsInserted, this, changed);
  connect(&m_model, &QAbstractItemModel::modelReset, this, changed);
  connect(&m_model, &QAbstractItemModel::modelReset, this, [this] { ShowDetails(); });
  connect(&m_model, &QAbstractItemModel::dataChanged, this, [this] { ShowDetails(); });
  connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this] { ShowDetails(); });
  connect(&m_model, &QAbstractItemModel::rowsAboutToBeRemoved, this, [this, bar] {
    m_isModelChanging = true;
    m_scrolledTo = bar->value();
  });
  connect(&m_model, &QAbstractItemModel::rowsRemoved, this, [this, bar](const QModelIndex&, int, int last) {
    if (!m_follow->isChecked()) bar->setValue(std::max(m_scrolledTo - last - 1, 0));
    m_isModelChanging = false;
  });
  connect(bar, &QScrollBar::valueChanged, this, [this, bar](int value) {
    if (!m_isModelChanging) m_follow->setChecked(value == bar->maximum());
  });
  connect(bar, &QScrollBar::rangeChanged, this, [this] { Follow(); });
  connect(m_follow, &QCheckBox::clicked, this, [this] { Follow(); });
  connect(m_severity, &QComboBox::currentIndexChanged, this, [this] { m_model.ShowUpTo(ChosenSeverity()); });
}

void CMessageWindow::Follow() {
  if (m_follow->isChecked()) m_table->scrollToBottom();
}

void CMessageWindow::ShowDetails() {
  const QModelIndex current = m_table->currentIndex();
  const QString details = current.isValid() ? m_model.Details(current.row()) : QString();
  if (details != m_details->toPlainText()) m_details->setPlainText(details);
}

char CMessageWindow::ChosenSeverity() const { return kSeverityChoices[m_severity->currentIndex()].severity; }

void CMessageWindow::Search(int step) {
  const QStringList words = m_words->text().split(' ', Qt::SkipEmptyParts);
  const QModelIndex current = m_table->currentIndex();
  if (words.isEmpty()) return m_words->setFocus();
  const int start = current.isValid() ? current.row() + step : step > 0 ? 0 : m_model.rowCount() - 1;
  const int row = m_model.Find(words, start, step);
  if (row < 0) return ShowStatus("No message shown has these words");
  m_table->selectRow(row);
  m_table->setCurrentIndex(m_model.index(row, 0));
  m_table->scrollTo(m_model.index(row, 0), QAbstractItemView::PositionAtCenter);
  m_follow->setChecked(false);  // also if the row is the newest
  ShowStatus();
}

void CMessageWindow::Copy() {
  QStringList lines;
  QModelIndexList rows = m_table->selectionModel()->selectedRows();
  std::sort(rows.begin(), rows.end());
  for (const QModelIndex& index : rows) lines << m_model.Text(index.row());
  if (!lines.isEmpty()) QGuiApplication::clipboard()->setText(lines.join('\n'));
}

void CMessageWindow::OpenPlace() {
  const QModelIndex current = m_table->currentIndex();
  if (!m_openPlace) return;
  if (!current.isValid()) return ShowStatus("Choose a message first");
  const CString part(m_model.Line(current.row()).part);
  if (part.IsEmpty()) return ShowStatus("This message is about no part of the configuration");
  m_openPlace(part);
}

void CMessageWindow::ShowStatus(const QString& fault) {
  const auto shown = static_cast<std::size_t>(m_model.rowCount());
  const std::size_t lines = m_model.Lines();
  const QString count =
      shown == lines ? CountedMessages(lines) : QString("%1 of %2").arg(shown).arg(CountedMessages(lines));
  m_status->setText(fault.isEmpty() ? count : fault);
}

CString CMessageWindow::State() const {
  return TableState(*this, *m_table->horizontalHeader(), {{"severity", m_severity->currentText()}});
}

void CMessageWindow::SetState(const CString& state) {
  const QJsonObject fields = UseTableState(state, *this, *m_table->horizontalHeader());
  m_severity->setCurrentIndex(std::max(0, m_severity->findText(fields["severity"].toString())));
  m_model.ShowUpTo(ChosenSeverity());
}

void CMessageWindow::Remember() { m_settings.Set(m_setting, State()); }

void CMessageWindow::closeEvent(QCloseEvent* event) {
  Remember();
  QWidget::closeEvent(event);
}

}  // namespace vastra
