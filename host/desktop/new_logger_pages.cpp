#include "host/desktop/new_logger_pages.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>

#include <memory>

#include "host/common/paths.h"
#include "host/desktop/place_words.h"
#include "host/desktop/value_rules.h"
#include "vastra/platform/chooser.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/prompt.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/plc_link.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kPollTime = 100;     // milliseconds
constexpr int kLongestTest = 150;  // polls
constexpr int kLongestPeriod = 86'400'000;

constexpr std::pair<const char*, int> kSummaryPeriods[] = {{"10 seconds", 10},  {"1 minute", 60},
                                                           {"10 minutes", 600}, {"1 hour", 3600},
                                                           {"8 hours", 28800},  {"1 day", 86400}};
constexpr std::pair<const char*, ELogEnd> kLogEnds[] = {
    {"each hour", ELogEnd::hour}, {"each day", ELogEnd::day}, {"each batch", ELogEnd::batch}};

QPlainTextEdit* NewReport(const char* name) {
  auto* report = new QPlainTextEdit;
  report->setReadOnly(true);
  report->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  report->setTabChangesFocus(true);
  report->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  report->setAccessibleName(name);
  RingOnFocus(*report);
  return report;
}

// The settings that a new node of the driver has before its form was open.
DriverConfig FirstSettings(int plcType) {
  DriverConfig driver;
  driver.plcType = plcType;
  if (plcType == kModbusType) {
    driver.station = 1;
    driver.timeOut = 1000;
    driver.text2 = "h0";
  }
  return driver;
}

}  // namespace

CNewLoggerPage::CNewLoggerPage(CNewLogger& logger, const char* title, const char* subtitle)
    : m_logger(logger) {
  setTitle(title);
  setSubTitle(subtitle);
  m_body = new QWidget;
  auto* area = new QScrollArea;
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::NoFocus);
  area->setWidgetResizable(true);
  area->setWidget(m_body);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins({});
  layout->addWidget(area);
}

void CNewLoggerPage::AddField(QFormLayout& form, const char* caption, QWidget* field) {
  field->setAccessibleName(QString(caption).remove('&').remove(':'));
  form.addRow(caption, field);
}

QLineEdit* CNewLoggerPage::AddEdit(QFormLayout& form, const char* caption) {
  auto* edit = new QLineEdit;
  AddField(form, caption, edit);
  return edit;
}

QSpinBox* CNewLoggerPage::AddNumber(QFormLayout& form, const char* caption, int low, int high) {
  auto* number = new QSpinBox;
  number->setRange(low, high);
  AddField(form, caption, number);
  return number;
}

bool CNewLoggerPage::IsRight(const CString& fault) {
  if (!fault.IsEmpty()) AfxMessageBox(fault);
  return fault.IsEmpty();
}

CString CNewLoggerPage::SettingsFault() const {
  const CLoggerPlan& plan = m_logger.plan;
  const CDriverFactory& factory = *CDriverFactory::Instance();
  const int index = factory.GetDriverIndex(plan.driver.plcType);
  if (index < 0) return "No driver is installed.";
  const CString wrong = factory.CheckConfig(index, DriverOf(plan));
  if (wrong.IsEmpty()) return {};
  const CPlaceWords words(ConfigurationOf(plan), [this](int plcType, const CString& field) {
    return m_logger.captions.Find(plcType, field);
  });
  return words.Fault("input.plcNodes[0].driver", wrong).Line();
}

bool CNewLoggerPage::StartTest(bool repeats, CString& fault) {
  fault = SettingsFault();
  if (!fault.IsEmpty()) return false;
  const CDriverFactory& factory = *CDriverFactory::Instance();
  const CString path = factory.GetDrivers()[factory.GetDriverIndex(Plan().driver.plcType)].m_loadPath;
  if (m_logger.test.Start(path, DriverOf(Plan()), repeats)) return true;
  return fault = "The driver has not returned from the test before.", false;
}

CDevicePage::CDevicePage(CNewLogger& logger)
    : CNewLoggerPage(
          logger, "Device",
          "Which device is read? The simulator needs none. Settings has its address; Test reads it.") {
  m_drivers = new QComboBox;
  auto* form = new QFormLayout(Body());
  AddField(*form, "&Device:", m_drivers);
  m_name = AddEdit(*form, "Na&me:");
  m_values = AddNumber(*form, "N&umber of values:", 1, kMostVariables);
  m_settings = new QPushButton("&Settings...");
  m_test = new QPushButton("&Test");
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(m_settings);
  buttons->addWidget(m_test);
  buttons->addStretch();
  form->addRow(buttons);
  m_result = NewReport("Result");
  form->addRow(m_result);
  const CDriverFactory& factory = *CDriverFactory::Instance();
  for (int i = 0; i < factory.GetDriverCount(); ++i)
    m_drivers->addItem(ToScreen(factory.GetDriverName(i)), factory.GetDriverID(i));
  m_drivers->setCurrentIndex(std::max(0, m_drivers->findData(kSimulatorType)));
  connect(m_drivers, &QComboBox::currentIndexChanged, this, [this] { TakeDriver(); });
  connect(m_values, &QSpinBox::valueChanged, this, [this] { ShowRows(); });
  connect(m_settings, &QPushButton::clicked, this, [this] { Configure(); });
  connect(m_test, &QPushButton::clicked, this, [this] { Test(); });
  connect(&m_poll, &QTimer::timeout, this, [this] { ShowTest(); });
  TakeDriver();
}

// Another driver: its first settings, and its name for the node.
void CDevicePage::TakeDriver() {
  m_logger.test.Stop();
  const int plcType = m_drivers->currentData().toInt();
  Plan().driver = FirstSettings(plcType);
  Plan().driverName = FromScreen(m_drivers->currentText());
  Plan().rows.clear();
  m_hasSettings = plcType == kSimulatorType || plcType == kModbusType;
  m_name->setText(plcType == kSimulatorType || m_drivers->count() == 0 ? "Simulator" : "Device");
  m_values->setValue(3);
  if (plcType == kSimulatorType) Plan().driver.text1 = "sine,ramp,counter";
  m_result->clear();
  for (QWidget* widget : {static_cast<QWidget*>(m_settings), static_cast<QWidget*>(m_test)})
    widget->setEnabled(m_drivers->count() > 0);
  ShowRows();
}

// Of a device with registers the list of its values says how many there are.
void CDevicePage::ShowRows() {
  Plan().rows = FirstRows(Plan(), m_values->value());
  const bool hasList = Plan().Registers().isUsed;
  m_values->setEnabled(!hasList);
  if (hasList) m_values->setValue(static_cast<int>(Plan().rows.size()));
}

void CDevicePage::ReadFields() { Plan().nodeName = FromScreen(m_name->text().trimmed()); }

// The page of the variables can have changed their number.
void CDevicePage::showEvent(QShowEvent* event) {
  const QSignalBlocker quiet(m_values);
  m_values->setValue(static_cast<int>(Plan().rows.size()));
  CNewLoggerPage::showEvent(event);
}

// The form of the driver, as in the sheet.
void CDevicePage::Configure() {
  m_logger.test.Stop();
  ReadFields();
  const CDriverFactory& factory = *CDriverFactory::Instance();
  const std::unique_ptr<CPlcLink> link(factory.NewDriver(factory.GetDriverIndex(Plan().driver.plcType)));
  if (!link) return;
  DriverConfig given = Plan().driver;
  given.variableCount = 0;  // not known yet
  if (m_hasSettings) link->SetConfig(given);
  if (link->ShowConfig(!m_hasSettings) != IDOK) return;
  m_hasSettings = true;
  const int plcType = Plan().driver.plcType;
  Plan().driver = link->GetConfig();
  Plan().driver.plcType = plcType;
  ShowRows();
  Test();
}

void CDevicePage::Test() {
  if (m_poll.isActive()) {  // the button stops the test
    m_logger.test.Stop();
    m_result->setPlainText("Stopped.");
    m_test->setText("&Test");
    return m_poll.stop();
  }
  ReadFields();
  CString fault;
  if (!StartTest(false, fault)) return m_result->setPlainText(ToScreen(fault));
  m_result->setPlainText("Opening...");
  m_test->setText("S&top");
  m_ticks = 0;
  m_poll.start(kPollTime);
}

void CDevicePage::ShowTest() {
  const CDeviceTest::CState state = m_logger.test.State();
  const bool isLate = ++m_ticks > kLongestTest;
  if (state.isBusy && !isLate) return m_result->setPlainText(state.isOpen ? "Reading..." : "Opening...");
  m_poll.stop();
  m_test->setText("&Test");
  m_logger.test.Stop();
  if (state.values.empty()) {
    const CString fault = isLate ? CString("the driver does not return") : state.fault;
    return m_result->setPlainText("The device was not read: " + ToScreen(fault));
  }
  QString text = QString("Read in %1 ms:\n").arg(state.milliseconds, 0, 'f', 1);
  for (std::size_t i = 0; i < state.values.size() && i < Plan().rows.size(); ++i)
    text += "\n" + ToScreen(Plan().rows[i].name + " = " + ValueText(state.values[i]));
  m_result->setPlainText(text);
}

bool CDevicePage::validatePage() {
  ReadFields();
  return IsRight(DeviceFault(Plan())) && IsRight(SettingsFault());
}

CLogsPage::CLogsPage(CNewLogger& logger)
    : CNewLoggerPage(logger, "Logs", "How often is the device read, and when does a new log begin?") {
  auto* form = new QFormLayout(Body());
  m_period = AddNumber(*form, "Scan &period:", 1, kLongestPeriod);
  m_period->setSuffix(" ms");
  m_end = new QComboBox;
  for (const auto& [text, end] : kLogEnds) m_end->addItem(text, static_cast<int>(end));
  AddField(*form, "A &log:", m_end);
  m_batch = new QComboBox;
  AddField(*form, "&Variable of the batch:", m_batch);
  m_keep = AddNumber(*form, "&Keep logs for:", 0, 36500);
  m_keep->setSuffix(" days");
  m_keep->setSpecialValueText("ever");
  m_binary = new QCheckBox("B&inary logs");
  m_text = new QCheckBox("&Text files");
  form->addRow(m_binary);
  form->addRow(m_text);
  m_folder = AddEdit(*form, "&Folder of the logs:");
  auto* note = new QLabel(
      "A log each hour or day has as many samples as that time, from the start of the logger on: it does not "
      "end at the full hour or at midnight. If the device has a variable for the hour or the day, choose a "
      "log each batch, of that variable: this ends when the variable changes, and has its value in its name. "
      "A relative folder is in the folder of the configuration. Old logs are also removed when less than "
      "1 GB of the disk is free.");
  note->setWordWrap(true);
  form->addRow(note);
  connect(m_end, &QComboBox::currentIndexChanged, this, [this] { EnableBatch(); });
}

void CLogsPage::EnableBatch() {
  m_batch->setEnabled(m_end->currentData().toInt() == static_cast<int>(ELogEnd::batch));
}

void CLogsPage::initializePage() {
  const CLoggerPlan& plan = Plan();
  m_batch->clear();
  for (const CVariableRow& row : plan.rows) m_batch->addItem(ToScreen(row.name));
  m_batch->setCurrentIndex(std::max(0, m_batch->findText(ToScreen(plan.batchVariable))));
  m_period->setValue(plan.scanPeriod);
  m_end->setCurrentIndex(m_end->findData(static_cast<int>(plan.logEnd)));
  m_keep->setValue(plan.keepDays);
  m_binary->setChecked(plan.saveRp);
  m_text->setChecked(plan.saveCsv);
  m_folder->setText(ToScreen(plan.logFolder));
  EnableBatch();
}

bool CLogsPage::validatePage() {
  CLoggerPlan& plan = Plan();
  plan.scanPeriod = m_period->value();
  plan.logEnd = static_cast<ELogEnd>(m_end->currentData().toInt());
  plan.batchVariable = plan.logEnd == ELogEnd::batch ? FromScreen(m_batch->currentText()) : CString();
  plan.keepDays = m_keep->value();
  plan.saveRp = m_binary->isChecked();
  plan.saveCsv = m_text->isChecked();
  plan.logFolder = FromScreen(m_folder->text().trimmed());
  return IsRight(LogsFault(plan));
}

CNewSummaryPage::CNewSummaryPage(CNewLogger& logger)
    : CNewLoggerPage(logger, "Summary",
                     "A summary has one row for many samples. Its equations are written for you.") {
  auto* layout = new QVBoxLayout(Body());
  m_summarises = new QCheckBox("&Make a summary");
  layout->addWidget(m_summarises);
  m_fields = new QWidget;
  layout->addWidget(m_fields);
  auto* form = new QFormLayout(m_fields);
  form->setContentsMargins(0, 0, 0, 0);
  m_period = new QComboBox;
  for (const auto& [text, seconds] : kSummaryPeriods) m_period->addItem(text, seconds);
  AddField(*form, "A &row each:", m_period);
  auto* functions = new QHBoxLayout;
  for (const CSummaryFunction& function : kSummaryFunctions) {
    m_functions.push_back(new QCheckBox(function.name));
    functions->addWidget(m_functions.back());
  }
  functions->addStretch();
  form->addRow("Functions:", functions);
  m_variables = new QListWidget;
  AddField(*form, "&Variables:", m_variables);
  m_folder = AddEdit(*form, "&Folder of the summary:");
  connect(m_summarises, &QCheckBox::toggled, m_fields, &QWidget::setEnabled);
}

void CNewSummaryPage::initializePage() {
  const CLoggerPlan& plan = Plan();
  m_summarises->setChecked(plan.summarises);
  m_period->setCurrentIndex(std::max(0, m_period->findData(plan.summarySeconds)));
  for (std::size_t i = 0; i < m_functions.size(); ++i)
    m_functions[i]->setChecked(plan.functions.contains(static_cast<int>(i)));
  m_variables->clear();
  for (const CVariableRow& row : plan.rows) {
    auto* item = new QListWidgetItem(ToScreen(row.name), m_variables);
    item->setCheckState(plan.leftOut.contains(row.name) ? Qt::Unchecked : Qt::Checked);
  }
  m_folder->setText(ToScreen(plan.summaryFolder));
}

bool CNewSummaryPage::validatePage() {
  CLoggerPlan& plan = Plan();
  plan.summarises = m_summarises->isChecked();
  plan.summarySeconds = m_period->currentData().toInt();
  plan.functions.clear();
  for (std::size_t i = 0; i < m_functions.size(); ++i)
    if (m_functions[i]->isChecked()) plan.functions.insert(static_cast<int>(i));
  plan.leftOut.clear();
  for (int i = 0; i < m_variables->count(); ++i)
    if (m_variables->item(i)->checkState() != Qt::Checked)
      plan.leftOut.insert(FromScreen(m_variables->item(i)->text()));
  plan.summaryFolder = FromScreen(m_folder->text().trimmed());
  return IsRight(SummaryFault(plan));
}

CWritePage::CWritePage(CNewLogger& logger, CString home)
    : CNewLoggerPage(
          logger, "Write",
          "Where is the configuration? It and its folders are made now; a file that exists stays."),
      m_home(std::move(home)) {
  setCommitPage(true);
  auto* layout = new QVBoxLayout(Body());
  auto* line = new QHBoxLayout;
  auto* label = new QLabel("&Configuration:");
  m_path = new QLineEdit;
  m_path->setAccessibleName("Configuration");
  label->setBuddy(m_path);
  auto* choose = new QPushButton("C&hoose...");
  line->addWidget(label);
  line->addWidget(m_path, 1);
  line->addWidget(choose);
  layout->addLayout(line);
  m_folders = new QLabel;
  m_folders->setTextFormat(Qt::PlainText);
  m_folders->setWordWrap(true);
  layout->addWidget(m_folders);
  layout->addStretch();
  connect(choose, &QPushButton::clicked, this, [this] { Choose(); });
  connect(m_path, &QLineEdit::textChanged, this, [this] { ReadPath(); });
}

// The folder of a logger is named as its device.
void CWritePage::initializePage() {
  if (m_path->text().isEmpty()) {
    CString name = Plan().nodeName;
    for (int slash; (slash = name.Find('/')) >= 0;) name = name.Left(slash) + "-" + name.Mid(slash + 1);
    m_path->setText(ToScreen(JoinPath(JoinPath(m_home, "vastra"), JoinPath(name, name + ".json"))));
  }
  ReadPath();
}

void CWritePage::ReadPath() {
  CLoggerPlan& plan = Plan();
  plan.path = FromScreen(m_path->text().trimmed());
  if (plan.path.IsEmpty()) return m_folders->clear();
  plan.path = MakeAbsolute(m_home, plan.path);
  CString text = "Logs: " + MakeAbsolute(DirectoryOf(plan.path), plan.logFolder);
  if (plan.summarises) text += "\nSummary: " + MakeAbsolute(DirectoryOf(plan.path), plan.summaryFolder);
  m_folders->setText(ToScreen(text));
}

void CWritePage::Choose() {
  CFileQuestion question;
  question.save = true;
  question.defaultExtension = "json";
  question.name = Plan().path;
  question.filter = "Configurations (*.json)|*.json|All Files (*.*)|*.*||";
  CString path;
  if (ChooseFile(question, path)) m_path->setText(ToScreen(path));
}

bool CWritePage::validatePage() {
  ReadPath();
  return IsRight(PathFault(Plan())) && IsRight(WriteLogger(Plan()));
}

CWrittenPage::CWrittenPage(CNewLogger& logger)
    : CNewLoggerPage(logger, "Written", "The sheet of the configuration (Ctrl+E) can change all of it.") {
  auto* layout = new QVBoxLayout(Body());
  m_written = NewReport("Written");
  layout->addWidget(m_written);
  m_start = new QCheckBox("&Start the logger now");
  m_start->setChecked(true);
  layout->addWidget(m_start);
  m_equations = new QCheckBox("Open the &equation editor");
  layout->addWidget(m_equations);
}

void CWrittenPage::initializePage() { m_written->setPlainText(ToScreen(DescribeLogger(Plan()))); }

}  // namespace vastra
