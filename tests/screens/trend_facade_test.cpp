// The dialog of the extra variables that the live views share.
#include "vastra/screens/trend_facade_dlg.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPlainTextEdit>

#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

using CUser = std::function<void(QWidget*)>;

class TrendFacade : public testing::Test {
 protected:
  int Run(const CUser& user) {
    m_options.m_baseVars = Names({"a", "b"});
    m_options.m_extraVars = Names({"old"});
    m_options.m_equationText = "old = a";
    m_options.m_equations = Names({"old = a"});
    m_options.m_calculateExtra = 7;
    int result = -1;
    CTrendFacadeDlg dialog;
    dialog.SetInputPointers(nullptr, &m_stage);
    WhileModal([&] { result = dialog.DoModal(); }, user);
    EXPECT_EQ(0u, CTrendFacadeDlg::m_suOpen) << "a way out that is not counted";
    return result;
  }
  std::string State() const {
    std::string state;
    for (const CStringArray* array :
         {&m_options.m_baseVars, &m_options.m_extraVars, &m_options.m_equations}) {
      for (const CString& text : *array) state += text.Std() + ",";
      state += "|";
    }
    return state + m_options.m_equationText.Std() + "|" + std::to_string(m_options.m_calculateExtra);
  }

  CLogTrendings m_stage;
  CTrendConfig& m_options = *m_stage.GetOptions();
  CTestPrompter m_prompter;
};

// Opens the dialog behind button, lets user work there and leaves it by end.
CUser In(const char* button, const CUser& user, const char* end) {
  return [=](QWidget* window) {
    WhileModal([&] { Click(window, button); },
               [&](QWidget* inner) {
                 user(inner);
                 Click(inner, end);
               });
  };
}

void DeleteLast(QWidget* variables) {
  Find<QListWidget>(variables, "Variable List")->setCurrentRow(2);
  Click(variables, "Delete Variable");
}

const CUser kAdd = In(
    "Insert  New Variable", [](QWidget* box) { Find<QLineEdit>(box, "New Variable")->setText("new"); }, "OK");

void Type(QWidget* equations) { Find<QPlainTextEdit>(equations, "Equations")->setPlainText("n = b; m = n;"); }

TEST_F(TrendFacade, OkWritesWhatWasChosenAndTheFlagAloneSurvivesCancel) {
  const char* kBefore = "a,b,|old,|old = a,|old = a|7";
  const struct {
    CUser user;
    const char *ok, *cancelled;
  } kCases[] = {
      {[](QWidget*) {}, kBefore, kBefore},
      {In("Variables ", DeleteLast, "OK"), "a,b,||old = a,|old = a|0", "a,b,|old,|old = a,|old = a|0"},
      {In("Variables ", kAdd, "OK"), "a,b,|old,new,|old = a,|old = a|1", "a,b,|old,|old = a,|old = a|1"},
      {In("Variables ", kAdd, "Cancel"), kBefore, kBefore},
      {In("Equations", Type, "OK"), "a,b,|old,|n = b, m = n,|n = b; m = n;|7", kBefore},
      {In("Equations", Type, "Cancel"), kBefore, kBefore},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(IDOK, Run([&](QWidget* window) {
                c.user(window);
                Click(window, "OK");
              }));
    EXPECT_EQ(c.ok, State());
    EXPECT_EQ(IDCANCEL, Run(c.user));  // closed by its close box
    EXPECT_EQ(c.cancelled, State());
  }
}

TEST_F(TrendFacade, OnlyOneIsOpen) {
  Run([&](QWidget*) {
    CTrendFacadeDlg second;
    second.SetInputPointers(nullptr, &m_stage);
    EXPECT_EQ(0, second.DoModal());
    EXPECT_EQ(std::vector<std::string>{"Message|Already open|30"}, m_prompter.Take());
    EXPECT_EQ(1u, CTrendFacadeDlg::m_suOpen);
  });
  {
    CTrendFacadeDlg left;
    left.SetInputPointers(nullptr, &m_stage);
    EXPECT_EQ(1, left.Create());
  }
  Run([](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); });
  EXPECT_EQ(std::vector<std::string>(), m_prompter.Take());
}

TEST_F(TrendFacade, WithoutNamesThereIsNothingToChoose) {
  CTrendFacadeDlg dialog;
  dialog.SetInputPointers(nullptr, &m_stage);
  WhileModal([&] { dialog.DoModal(); }, [](QWidget* window) { Click(window, "Variables "); });
  EXPECT_EQ(std::vector<std::string>{"Message|No variables available|30"}, m_prompter.Take());
}

}  // namespace
}  // namespace vastra
