// A user of the configuration sheet: what the tests of its pages do alike.
#pragma once

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>

#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/screens/input_page.h"
#include "vastra/screens/smart_page.h"

namespace vastra {

using CUser = std::function<void(QWidget*)>;
using CTexts = std::vector<std::string>;

constexpr const char* kNoWhole = "Please enter a whole number from 0 to 4294967295.";
constexpr const char* kNoName = "Wrong Configuration!!\n You must give a name";
constexpr const char* kNoPath = "Wrong Configuration!!\n You must select a destination path";
constexpr const char* kNoEquations =
    "Wrong Configuration!!\n To write logs you must enter the basic enable equations at least";

// Opens a sheet of page alone, and lets user work on it.
inline void OnPage(CPropertyPage& page, const CUser& user) {
  CPropertySheet sheet("Test");
  sheet.AddPage(page);
  WhileModal([&] { sheet.DoModal(); }, [&](QWidget*) { user(page.Widget()); });
}

// Opens the dialog behind button, lets user work there and leaves it by end.
inline void In(QWidget* window, const char* button, const CUser& user, const char* end = "OK") {
  WhileModal([&] { Click(window, button); },
             [&](QWidget* dialog) {
               user(dialog);
               Click(dialog, end);
             });
}

inline void GiveUp(QWidget* window, const char* button, const CUser& user) {
  In(window, button, user, "Cancel");
}

// OK leaves the dialog open and the user with box.
inline void IsRefused(QWidget* dialog, CTestPrompter& prompter, const std::string& box) {
  Click(dialog, "OK");
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_EQ(CTexts{"|" + box + "|30"}, prompter.Take());
}

// Presses button, behind which no dialog is to open.
inline void Quietly(QWidget* window, const char* button) {
  bool done = false;
  QTimer::singleShot(0, [&done, before = QApplication::activeModalWidget()] {
    QWidget* now = QApplication::activeModalWidget();
    if (done || now == before) return;
    ADD_FAILURE() << "a dialog opened";
    now->close();
  });
  Click(window, button);
  done = true;
  QCoreApplication::processEvents();
}

inline void Type(QWidget* window, const char* field, const char* text) {
  Find<QLineEdit>(window, field)->setText(text);
}

inline std::string Typed(QWidget* window, const char* field) {
  return Find<QLineEdit>(window, field)->text().toStdString();
}

inline bool Enabled(QWidget* window, const char* button) {
  return Find<QAbstractButton>(window, button)->isEnabled();
}

inline void Check(QWidget* window, const char* box) { Find<QAbstractButton>(window, box)->click(); }

// In the editor of equations.
inline CUser Write(const char* text) {
  return [=](QWidget* editor) { Find<QPlainTextEdit>(editor, "Equations")->setPlainText(text); };
}

inline std::string Written(QWidget* editor) {
  return Find<QPlainTextEdit>(editor, "Equations")->toPlainText().toStdString();
}

// In the dialog of variables: takes all there are.
inline void TakeAll(QWidget* dialog) { Click(dialog, "->>"); }

inline CTexts Offered(QWidget* dialog) { return Shown(Find<QListWidget>(dialog, "Available Vars")); }

inline std::string Joined(const CStringArray& texts) {
  std::string all;
  for (const CString& text : texts) all += text.Std() + ",";
  return all;
}

// Gives names by preprocessing, or, without any, fails: it is connected to no node.
inline void SetInput(CInputPage& page, std::initializer_list<const char*> names) {
  CInputConfig config;
  config.m_preprocess = names.size() != 0;
  config.m_preNewVars = Names(names);
  page.SetConfiguration(config);
}

inline void SetSmart(CSmartPage& page, std::initializer_list<const char*> outputs) {
  CSmartConfig config;
  config.m_outputVars = Names(outputs);
  page.SetConfiguration(config);
}

}  // namespace vastra
