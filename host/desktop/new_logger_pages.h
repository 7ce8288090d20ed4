// The pages of the assistant for a new logger. Each moves values between its widgets and the plan when it is
// shown and left; new_logger_rules.h and variable_list_rules.h decide what is right.
#pragma once

#include <QTimer>
#include <QWizardPage>

#include "host/desktop/new_logger_window.h"

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTableWidget;

namespace vastra {

class CNewLoggerPage : public QWizardPage {
 protected:
  CNewLoggerPage(CNewLogger& logger, const char* title, const char* subtitle);

  CLoggerPlan& Plan() { return m_logger.plan; }
  // What the page shows is in this widget, which is scrolled on a small screen.
  QWidget* Body() { return m_body; }
  // A row of a form, with a label that leads to the field by its key.
  static void AddField(QFormLayout& form, const char* caption, QWidget* field);
  QLineEdit* AddEdit(QFormLayout& form, const char* caption);
  QSpinBox* AddNumber(QFormLayout& form, const char* caption, int low, int high);
  // Shows fault in a box. True if there is none.
  bool IsRight(const CString& fault);
  // What the driver says about the settings of the plan, in the words of its form; empty: they are right.
  CString SettingsFault() const;
  // Opens the device of the plan for reading; false: it cannot be, and the reason is in fault.
  bool StartTest(bool repeats, CString& fault);

  CNewLogger& m_logger;

 private:
  QWidget* m_body;
};

class CDevicePage : public CNewLoggerPage {
 public:
  explicit CDevicePage(CNewLogger& logger);
  bool validatePage() override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void TakeDriver();
  void Configure();
  void Test();
  void ShowTest();
  void ShowRows();
  void ReadFields();

  QComboBox* m_drivers;
  QLineEdit* m_name;
  QSpinBox* m_values;
  QPushButton *m_settings, *m_test;
  QPlainTextEdit* m_result;
  QTimer m_poll;
  int m_ticks = 0;
  bool m_hasSettings = false;  // of the plan; else the form begins with the defaults of the driver
};

class CVariablesPage : public CNewLoggerPage {
 public:
  explicit CVariablesPage(CNewLogger& logger);
  void initializePage() override;
  void cleanupPage() override;
  bool validatePage() override;

 private:
  void MakeTable();
  void ShowRows();
  void ReadRows();
  void AddRow();
  void RemoveRows();
  void Import();
  void Read(bool isOn);
  void ShowValues();

  QTableWidget* m_table;
  QPushButton* m_live;
  QLabel* m_state;
  QTimer m_poll;
  std::vector<CVariableRow> m_first;  // as the device suggests them
};

class CLogsPage : public CNewLoggerPage {
 public:
  explicit CLogsPage(CNewLogger& logger);
  void initializePage() override;
  bool validatePage() override;

 private:
  void EnableBatch();

  QSpinBox *m_period, *m_keep;
  QComboBox *m_end, *m_batch;
  QCheckBox *m_binary, *m_text;
  QLineEdit* m_folder;
};

class CNewSummaryPage : public CNewLoggerPage {
 public:
  explicit CNewSummaryPage(CNewLogger& logger);
  void initializePage() override;
  bool validatePage() override;

 private:
  QCheckBox* m_summarises;
  QWidget* m_fields;
  QComboBox* m_period;
  std::vector<QCheckBox*> m_functions;
  QListWidget* m_variables;
  QLineEdit* m_folder;
};

class CWritePage : public CNewLoggerPage {
 public:
  CWritePage(CNewLogger& logger, CString home);
  void initializePage() override;
  bool validatePage() override;

 private:
  void Choose();
  void ReadPath();

  const CString m_home;
  QLineEdit* m_path;
  QLabel* m_folders;
};

class CWrittenPage : public CNewLoggerPage {
 public:
  explicit CWrittenPage(CNewLogger& logger);
  void initializePage() override;
  QCheckBox* StartBox() { return m_start; }
  QCheckBox* EquationsBox() { return m_equations; }

 private:
  QPlainTextEdit* m_written;
  QCheckBox *m_start, *m_equations;
};

}  // namespace vastra
