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

class TrendFacade : public testing::Test {
 protected:
  TrendFacade() {
    m_options.m_baseVars = Names({"a", "b"});
    m_options.m_extraVars = Names({"old"});
    m_options.m_equationText = "old = a";
    m_options.m_equations = Names({"old = a"});
  }
  ~TrendFacade() override { EXPECT_EQ(0u, CTrendFacadeDlg::m_suOpen); }

  int Run(const std::function<void(QWidget*)>& user) {
    CTrendFacadeDlg dialog;
    dialog.SetInputPointers(nullptr, &m_stage);
    int result = -1;
    WhileModal([&] { result = dialog.DoModal(); }, user);
    EXPECT_EQ(0u, CTrendFacadeDlg::m_suOpen);
    return result;
  }
  std::string State() const {
    std::string state;
    for (const CStringArray* array : {&m_options.m_baseVars, &m_options.m_extraVars, &m_options.m_equations})
      for (const CString& text : *array)
        state += text.Std() + (&text == &*array->begin() + array->GetSize() - 1 ? "|" : ",");
    return state + m_options.m_equationText.Std() + "|" + std::to_string(m_options.m_calculateExtra);
  }

  CLogTrendings m_stage;
  CTrendConfig& m_options = *m_stage.GetOptions();
  CTestPrompter m_prompter;
};

// Deletes the variable at row of the second dialog and leaves that by end.
void DeleteVariable(QWidget* window, int row, const char* end) {
  WhileModal([&] { Click(window, "Variables "); },
             [&](QWidget* variables) {
               Find<QListWidget>(variables, "Variable List")->setCurrentRow(row);
               Click(variables, "Delete Variable");
               Click(variables, end);
             });
}

void InsertVariable(QWidget* window, const char* name, const char* end) {
  WhileModal([&] { Click(window, "Variables "); },
             [&](QWidget* variables) {
               WhileModal([&] { Click(variables, "Insert  New Variable"); },
                          [&](QWidget* box) {
                            Find<QLineEdit>(box, "New Variable")->setText(name);
                            Click(box, "OK");
                          });
               Click(variables, end);
             });
}

void TypeEquations(QWidget* window, const char* text, const char* end) {
  WhileModal([&] { Click(window, "Equations"); },
             [&](QWidget* equations) {
               Find<QPlainTextEdit>(equations, "Equations")->setPlainText(text);
               Click(equations, end);
             });
}

TEST_F(TrendFacade, OkWritesWhatWasChosenAndTheFlagAloneSurvivesCancel) {
  const struct {
    const char* what;
    std::function<void(QWidget*)> user;
    const char *ok, *cancelled;
  } kCases[] = {
      {"nothing", [](QWidget*) {}, "a,b|old|old = a|old = a|7", "a,b|old|old = a|old = a|7"},
      {"last variable deleted", [](QWidget* w) { DeleteVariable(w, 2, "OK"); }, "a,b|old = a|old = a|0",
       "a,b|old|old = a|old = a|0"},
      {"variable added", [](QWidget* w) { InsertVariable(w, "new", "OK"); }, "a,b|old,new|old = a|old = a|1",
       "a,b|old|old = a|old = a|1"},
      {"variables given up", [](QWidget* w) { InsertVariable(w, "new", "Cancel"); },
       "a,b|old|old = a|old = a|7", "a,b|old|old = a|old = a|7"},
      {"equations", [](QWidget* w) { TypeEquations(w, "n = b; m = n;", "OK"); },
       "a,b|old|n = b, m = n|n = b; m = n;|7", "a,b|old|old = a|old = a|7"},
      {"equations given up", [](QWidget* w) { TypeEquations(w, "n = b", "Cancel"); },
       "a,b|old|old = a|old = a|7", "a,b|old|old = a|old = a|7"},
  };
  const CTrendConfig before = m_options;
  for (const auto& c : kCases) {
    for (const char* end : {"OK", "Cancel"}) {
      m_options = before;
      m_options.m_calculateExtra = 7;
      const int result = Run([&](QWidget* window) {
        EXPECT_EQ(1u, CTrendFacadeDlg::m_suOpen);
        c.user(window);
        Click(window, end);
      });
      EXPECT_EQ(*end == 'O' ? IDOK : IDCANCEL, result);
      EXPECT_EQ(*end == 'O' ? c.ok : c.cancelled, State()) << c.what << ", " << end;
    }
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
  for (const auto& close : {+[](QWidget* window) { window->close(); },
                            +[](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); }})
    EXPECT_EQ(IDCANCEL, Run(close)) << "a way out that is not counted";
  EXPECT_EQ(std::vector<std::string>(), m_prompter.Take());
}

TEST_F(TrendFacade, WithoutNamesThereIsNothingToChoose) {
  m_options.m_baseVars.RemoveAll();
  Run([](QWidget* window) { Click(window, "Variables "); });
  EXPECT_EQ(std::vector<std::string>{"Message|No variables available|30"}, m_prompter.Take());
}

}  // namespace
}  // namespace vastra
