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

// Opens pages in a sheet, lets user work there and leaves it by end.
inline int RunSheet(const std::vector<CPropertyPage*>& pages, const CUser& user, const char* end = "OK") {
  CPropertySheet sheet("Configuration");
  for (CPropertyPage* page : pages) sheet.AddPage(*page);
  int result = -1;
  WhileModal([&] { result = sheet.DoModal(); },
             [&](QWidget* window) {
               user(window);
               Click(window, end);
             });
  return result;
}

inline void NoUser(QWidget*) {}

// One after the other.
inline CUser All(const std::vector<CUser>& users) {
  return [=](QWidget* window) {
    for (const CUser& user : users) user(window);
  };
}

// Opens the dialog behind button, lets user work there and leaves it by end.
inline CUser In(const char* button, const CUser& user, const char* end = "OK") {
  return [=](QWidget* window) {
    WhileModal([&] { Click(window, button); },
               [&](QWidget* dialog) {
                 user(dialog);
                 Click(dialog, end);
                 EXPECT_FALSE(dialog->isVisible()) << "behind " << button;
               });
  };
}

inline CUser Press(const char* caption) {
  return [=](QWidget* window) { Click(window, caption); };
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

// Puts text in place of what the field shows.
inline CUser Type(const char* field, const char* text) {
  return [=](QWidget* window) {
    auto* edit = Find<QLineEdit>(window, field);
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
  };
}

inline CUser Mark(const char* list, int row) {
  return [=](QWidget* window) { Find<QListWidget>(window, list)->setCurrentRow(row); };
}

inline void DoubleClick(QListWidget* list, int row) {
  const QPoint place = list->visualItemRect(list->item(row)).center();
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
  QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
}

// What keeps the user from leaving a dialog by OK, and what then helps; in the order that it comes in.
struct CHurdle {
  const char* box;
  CUser help;
};
inline void Overcome(QWidget* dialog, CTestPrompter& prompter, const std::vector<CHurdle>& hurdles) {
  for (const CHurdle& hurdle : hurdles) {
    Click(dialog, "OK");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(CTexts{std::string("|") + hurdle.box + "|30"}, prompter.Take());
    hurdle.help(dialog);
  }
}

// In the editor of equations: puts text behind what is there.
inline CUser Append(const char* text) {
  return [=](QWidget* editor) { Find<QPlainTextEdit>(editor, "Equations")->appendPlainText(text); };
}

// In the dialog of variables.
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

// Dialogs of outputs and of summaries.
constexpr const char* kNoWhole = "Please enter a whole number from 0 to 4294967295.";
constexpr const char* kNoName = "Wrong Configuration!!\n You must give a name";
constexpr const char* kNoPath = "Wrong Configuration!!\n You must select a destination path";
constexpr const char* kNoEquations =
    "Wrong Configuration!!\n To write logs you must enter the basic enable equations at least";

}  // namespace vastra
