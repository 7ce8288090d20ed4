// CMessageWindow: the message log of the desktop: a table of messages, which can be filtered, searched and
// copied. It opens beside the console window of CMessages.
#pragma once

#include <QWidget>

#include <functional>

#include "host/desktop/message_model.h"
#include "host/desktop/settings.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QTableView;

namespace vastra {

class CMessageWindow : public QWidget {
 public:
  // Opens the part of the configuration that a message is about, as in CLoggedMessage::part.
  using COpenPlace = std::function<void(const CString& part)>;

  // setting: the name under which settings remember place, columns and choices. Without openPlace the window
  // does not offer to open one, and is the part of another window. settings, model and what openPlace uses
  // must exist as long as the window.
  CMessageWindow(CSettings& settings, const char* setting, CMessageModel& model, COpenPlace openPlace);
  ~CMessageWindow() override;

  // Place, columns and filter as a string, and back.
  CString State() const;
  void SetState(const CString& state);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void MakeTable();
  void MakeActions();
  void MakeLayout();
  void FollowModel();
  void Remember();

  void Search(int step);
  void Copy();
  void OpenPlace();
  void Follow();
  void ShowDetails();
  void ShowStatus(const QString& fault = {});
  char ChosenSeverity() const;

  CSettings& m_settings;
  const CString m_setting;
  CMessageModel& m_model;
  const COpenPlace m_openPlace;
  QComboBox* m_severity;
  QLineEdit* m_words;
  QTableView* m_table;
  QPlainTextEdit* m_details;  // of the current row
  QCheckBox* m_follow;
  QLabel* m_status;
  QAction *m_copy = nullptr, *m_clear = nullptr, *m_open = nullptr;
  bool m_isModelChanging = false;  // the view scrolls, but not by the user
  int m_scrolledTo = 0;            // before the model changes
};

}  // namespace vastra
