// The page of the variables that the host's own logic reads and writes.
#include "vastra/screens/smart_page.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"

namespace vastra {
namespace {

constexpr const char* kInput = "Smart Input Variables...";
constexpr const char* kEquations = "Smart Equations...";
constexpr const char* kOutput = "Smart Output Variables...";

class SmartPage : public testing::Test {
 protected:
  SmartPage() {
    CSmartConfig config;
    config.m_outputVars = Names({"o"});
    config.m_equations = Names({"e = 1"});
    config.m_inputVars = Names({"i"});
    config.m_equationText = "e = 1;";
    config.m_inputNames = Names({"another's"});
    m_page.SetConfiguration(config);
    SetInput(m_input, {"a"});
    m_page.SetInputPointer(&m_input);
  }
  std::string Held() const {
    CSmartConfig config;
    config.m_inputNames = Names({"kept"});
    config.m_equations = config.m_outputVars = config.m_inputVars = Names({"gone"});
    m_page.GetConfiguration(config);
    return Joined(config.m_inputNames) + "|" + Joined(config.m_inputVars) + "|" +
           config.m_equationText.Std() + "|" + Joined(config.m_equations) + "|" + Joined(config.m_outputVars);
  }

  CInputPage m_input;
  CSmartPage m_page;
  CTestPrompter m_prompter;
};

void Empty(QWidget* list) { Click(list, "Delete All"); }

TEST_F(SmartPage, EachDialogEditsItsPartBehindOk) {
  const char* kBefore = "kept,|i,|e = 1;|e = 1,|o,";
  const struct {
    const char* button;
    CUser user;
    const char* after;
  } kCases[] = {
      {kInput, TakeAll, "kept,|i,a,|e = 1;|e = 1,|o,"},
      {kEquations, Write("x = a; y = x;"), "kept,|i,a,|x = a; y = x;|x = a, y = x,|o,"},
      {kOutput, Empty, "kept,|i,a,|x = a; y = x;|x = a, y = x,|"},
  };
  EXPECT_EQ(kBefore, Held());
  OnPage(m_page, [&](QWidget* page) {
    for (const auto& c : kCases) GiveUp(page, c.button, c.user);
    EXPECT_EQ(kBefore, Held());
    for (const auto& c : kCases) {
      In(page, c.button, c.user);
      EXPECT_EQ(c.after, Held());
    }
  });
  EXPECT_EQ(m_prompter.Take(), CTexts());
}

TEST_F(SmartPage, OpensWithoutNamesUnlessTheyCannotBeFound) {
  m_page.SetInputPointer(nullptr);
  OnPage(m_page, [](QWidget* page) {
    In(page, kInput, [](QWidget* list) { EXPECT_EQ(CTexts(), Offered(list)); });
    In(page, kEquations, [](QWidget* editor) { EXPECT_EQ("e = 1;", Written(editor)); });
  });
  m_page.SetInputPointer(&m_input);
  SetInput(m_input, {});
  OnPage(m_page, [](QWidget* page) {
    Quietly(page, kInput);
    Quietly(page, kEquations);
    In(page, kOutput, Empty);
  });
  EXPECT_EQ("kept,|i,|e = 1;|e = 1,|", Held());
  EXPECT_EQ(m_prompter.Take(), CTexts());
}

}  // namespace
}  // namespace vastra
