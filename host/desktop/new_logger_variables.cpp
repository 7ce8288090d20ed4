// The page of the assistant with the table of the variables.
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "host/common/paths.h"
#include "host/common/shown_text.h"
#include "host/desktop/new_logger_pages.h"
#include "host/desktop/value_rules.h"
#include "vastra/platform/chooser.h"
#include "vastra/platform/file.h"
#include "vastra/platform/prompt.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kLivePoll = 200;  // milliseconds
constexpr int kRawColumn = static_cast<int>(std::size(kVariableColumns));
constexpr std::uint64_t kLongestList = 4 << 20;  // bytes of a file
constexpr std::size_t kMostShownFaults = 15;

// A cell whose text is one of a list.
class CChoiceDelegate : public QStyledItemDelegate {
 public:
  CChoiceDelegate(std::span<const char* const> choices, QObject* parent)
      : QStyledItemDelegate(parent), m_choices(choices) {}

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex&) const override {
    auto* combo = new QComboBox(parent);
    for (const char* choice : m_choices) combo->addItem(choice);
    return combo;
  }
  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    auto* combo = static_cast<QComboBox*>(editor);
    combo->setCurrentIndex(std::max(0, combo->findText(index.data(Qt::EditRole).toString())));
  }
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
    model->setData(index, static_cast<QComboBox*>(editor)->currentText());
  }

 private:
  const std::span<const char* const> m_choices;
};

// The text of the file, or why it cannot be read.
CString ReadList(const CString& path, std::string& text) {
  if (const CString other = OtherThanFile(path); !other.IsEmpty()) return path + " is " + other;
  try {
    CFile file(path, CFile::modeRead);
    const std::uint64_t length = file.GetLength();
    if (length > kLongestList) return path + ": it has more than 4 MB, and is no list of variables";
    text.resize(length);
    text.resize(file.Read(text.data(), static_cast<UINT>(text.size())));
    if (text.find('\0') == std::string::npos) return {};
    return path + ": it is not text in UTF-8. A spreadsheet saves its table as CSV.";
  } catch (const CFileException& fault) {
    return path + ": " + fault.Text();
  }
}

}  // namespace

CVariablesPage::CVariablesPage(CNewLogger& logger)
    : CNewLoggerPage(
          logger, "Variables",
          "Each value is a variable: the value times the scale. Unit and comment are for people.") {
  auto* layout = new QVBoxLayout(Body());
  MakeTable();
  layout->addWidget(m_table);
  auto* buttons = new QHBoxLayout;
  const auto add = [&](const char* text, auto action) {
    auto* button = new QPushButton(text);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    buttons->addWidget(button);
    return button;
  };
  add("&Add", [this] { AddRow(); });
  add("&Remove", [this] { RemoveRows(); });
  add("&Import...", [this] { Import(); });
  m_live = add("&Live Values", [this](bool isOn) { Read(isOn); });
  m_live->setCheckable(true);
  buttons->addStretch();
  layout->addLayout(buttons);
  m_state = new QLabel;
  m_state->setWordWrap(true);
  m_state->setTextFormat(Qt::PlainText);
  layout->addWidget(m_state);
  connect(&m_poll, &QTimer::timeout, this, [this] { ShowValues(); });
}

void CVariablesPage::MakeTable() {
  m_table = new QTableWidget(0, kRawColumn + 1);
  m_table->setAccessibleName("Variables");
  RingOnFocus(*m_table);
  QStringList titles;
  for (const CVariableColumn& column : kVariableColumns) titles << column.title;
  m_table->setHorizontalHeaderLabels(titles << "Raw value");
  m_table->setTabKeyNavigation(false);
  m_table->horizontalHeader()->setStretchLastSection(true);
  m_table->horizontalHeader()->moveSection(kRawColumn, 1);  // beside the name: in sight with all columns
  const auto choose = [&](const char* title, std::span<const char* const> choices) {
    m_table->setItemDelegateForColumn(static_cast<int>(titles.indexOf(title)),
                                      new CChoiceDelegate(choices, m_table));
  };
  choose("Type", kRegisterTypes);
  choose("Order", kRegisterOrders);
  connect(m_table, &QTableWidget::cellChanged, this, [this](int, int column) {
    if (column != kRawColumn) Read(false);
  });
}

void CVariablesPage::initializePage() {
  CLoggerPlan untouched = Plan();
  untouched.rows.clear();
  m_first = FirstRows(untouched, static_cast<int>(Plan().rows.size()));
  for (int i = 0; i < kRawColumn; ++i)
    m_table->setColumnHidden(i, kVariableColumns[i].isRegister && !Plan().Registers().isUsed);
  ShowRows();
  m_state->clear();
}

// Back keeps what was typed.
void CVariablesPage::cleanupPage() {
  Read(false);
  ReadRows();
  if (RowsFault(Plan().rows, Plan().Registers()).IsEmpty()) Plan().driver = DriverOf(Plan());
}

void CVariablesPage::ShowRows() {
  const QSignalBlocker quiet(m_table);
  m_table->setRowCount(static_cast<int>(Plan().rows.size()));
  for (int row = 0; row < m_table->rowCount(); ++row) {
    for (int i = 0; i < kRawColumn; ++i)
      m_table->setItem(row, i,
                       new QTableWidgetItem(
                           ToScreen(Plan().rows[static_cast<std::size_t>(row)].*kVariableColumns[i].text)));
    auto* raw = new QTableWidgetItem;
    raw->setFlags(raw->flags() & ~Qt::ItemIsEditable);
    m_table->setItem(row, kRawColumn, raw);
  }
  constexpr int kNarrowest = 9, kWidest = 30;  // letters
  const int letter = fontMetrics().averageCharWidth();
  m_table->resizeColumnsToContents();
  for (int i = 0; i <= kRawColumn; ++i)
    if (m_table->horizontalHeader()->visualIndex(i) < kRawColumn)  // the last one has the rest of the width
      m_table->setColumnWidth(i, std::clamp(m_table->columnWidth(i), kNarrowest * letter, kWidest * letter));
}

void CVariablesPage::ReadRows() {
  Plan().rows.resize(static_cast<std::size_t>(m_table->rowCount()));
  for (int row = 0; row < m_table->rowCount(); ++row)
    for (int i = 0; i < kRawColumn; ++i)
      Plan().rows[static_cast<std::size_t>(row)].*kVariableColumns[i].text =
          FromScreen(m_table->item(row, i)->text().trimmed());
}

void CVariablesPage::AddRow() {
  Read(false);
  ReadRows();
  if (Plan().rows.size() >= static_cast<std::size_t>(kMostVariables)) return m_state->setText(kTooMany);
  CVariableRow row = {.name = "Value" + CString(std::to_string(Plan().rows.size() + 1))};
  if (Plan().Registers().isUsed && !Plan().rows.empty()) row.type = Plan().rows.back().type;
  Plan().rows.push_back(row);
  ShowRows();
  m_table->setCurrentCell(m_table->rowCount() - 1, 0);
  m_table->setFocus();
}

void CVariablesPage::RemoveRows() {
  Read(false);
  ReadRows();
  std::set<int> rows;
  for (const QModelIndex& index : m_table->selectionModel()->selectedIndexes()) rows.insert(index.row());
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) Plan().rows.erase(Plan().rows.begin() + *row);
  ShowRows();
}

// The variables of a list come after those of the table, or in place of those that the device suggested and
// of those of the same names: so a list that was corrected can be imported again.
void CVariablesPage::Import() {
  Read(false);
  ReadRows();
  CFileQuestion question;
  question.mustExist = true;
  question.filter = "Lists (*.csv *.txt)|*.csv;*.txt|All Files (*.*)|*.*||";
  CString path;
  if (!ChooseFile(question, path)) return;
  std::string text;
  if (!IsRight(ReadList(path, text))) return;
  const CImportedRows found = ImportRows(FromScreen(ToScreen(CString(text))), Plan().Registers());
  CString faults;
  for (std::size_t i = 0; i < std::min(found.faults.size(), kMostShownFaults); ++i)
    faults += "\n" + CString(OneLine(found.faults[i].View()));
  if (found.faults.size() > kMostShownFaults)
    faults += "\nand " + CString(std::to_string(found.faults.size() - kMostShownFaults)) + " more";
  if (!faults.IsEmpty()) return AfxMessageBox(path + ": nothing was imported." + faults), void();
  if (Plan().rows == m_first) Plan().rows.clear();
  const std::optional<std::size_t> replaced = MergeRows(found.rows, Plan().rows);
  if (!replaced) return AfxMessageBox(path + ": nothing was imported.\n" + kTooMany), void();
  CString state = CString(Counted(found.rows.size(), "variable")) + " imported";
  if (*replaced)
    state += ", " + CString(std::to_string(*replaced)) + " of them in place of rows with their names";
  for (std::size_t i = 0; i < found.leftOut.size(); ++i)
    state += (i ? ", " : "; columns that are left out: ") + found.leftOut[i];
  ShowRows();
  m_state->setText(ToScreen(state));
}

// Starts or ends the reading of the raw values.
void CVariablesPage::Read(bool isOn) {
  if (!isOn && !m_poll.isActive()) return m_live->setChecked(false);
  m_logger.test.Stop();
  m_poll.stop();
  m_state->clear();
  m_live->setChecked(isOn);
  if (!isOn) return;
  ReadRows();
  CString fault = RowsFault(Plan().rows, Plan().Registers());
  if (fault.IsEmpty() && StartTest(true, fault)) return m_poll.start(kLivePoll);
  m_live->setChecked(false);
  m_state->setText(ToScreen(fault));
}

void CVariablesPage::ShowValues() {
  const CDeviceTest::CState state = m_logger.test.State();
  const QSignalBlocker quiet(m_table);
  for (int row = 0; row < m_table->rowCount(); ++row) {
    const auto index = static_cast<std::size_t>(row);
    const bool isRead = index < state.values.size() && state.fault.IsEmpty();
    m_table->item(row, kRawColumn)->setText(isRead ? ToScreen(ValueText(state.values[index])) : QString());
  }
  m_state->setText(state.fault.IsEmpty() ? QString() : "Not read: " + ToScreen(state.fault));
  if (!state.isBusy) {  // the driver could not be opened
    m_poll.stop();
    m_live->setChecked(false);
  }
}

bool CVariablesPage::validatePage() {
  Read(false);
  ReadRows();
  if (!IsRight(RowsFault(Plan().rows, Plan().Registers())) || !IsRight(SettingsFault())) return false;
  CLoggerPlan& plan = Plan();
  plan.driver = DriverOf(plan);  // a list of values is that of the rows from now on
  for (CVariableRow& row : plan.rows) row.name.TrimRight();
  return true;
}

}  // namespace vastra
