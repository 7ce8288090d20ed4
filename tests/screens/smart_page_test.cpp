// The page of the variables that the host's own logic reads and writes.
#include "vastra/screens/smart_page.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"

namespace vastra {
namespace {

constexpr const char* kInput = "Smart Input Variables...";
constexpr const char* kEquations = "Smart Equations...";
constexpr const char* kOutput = "Smart Output Variables...";

std::string Held(const CSmartPage& page) {
  CSmartConfig config;
  config.m_inputNames = Names({"kept"});
  config.m_equations = config.m_outputVars = config.m_inputVars = Names({"gone"});
  page.GetConfiguration(config);
  return Joined(config.m_inputNames) + "|" + Joined(config.m_inputVars) + "|" + config.m_equationText.Std() +
         "|" + Joined(config.m_equations) + "|" + Joined(config.m_outputVars);
}

TEST(SmartPage, EachDialogEditsItsPartBehindOk) {
  CInputPage input;
  SetInput(input, {"a"});
  CSmartConfig config;
  config.m_outputVars = Names({"o"});
  config.m_equations = Names({"e = 1"});
  config.m_inputVars = Names({"i"});
  config.m_equationText = "e = 1;";
  config.m_inputNames = Names({"another's"});
  CSmartPage page;
  page.SetConfiguration(config);
  const auto offers = [](const CTexts& names) {
    return [=](QWidget* list) { EXPECT_EQ(names, Offered(list)); };
  };
  CTestPrompter prompter;

  // Without an input page the dialogs open, and offer nothing.
  RunSheet({&page}, All({In(kInput, offers({})), In(kEquations, NoUser)}));
  page.SetInputPointer(&input);
  const char* before = "kept,|i,|e = 1;|e = 1,|o,";
  const struct {
    const char* button;
    CUser user;
    const char* after;
  } kCases[] = {
      {kInput, All({offers({"a"}), Press("->>")}), "kept,|i,a,|e = 1;|e = 1,|o,"},
      {kEquations, Append("x = a;"), "kept,|i,a,|e = 1;\r\nx = a;|e = 1,\r\nx = a,|o,"},
      {kOutput, Press("Delete All"), "kept,|i,a,|e = 1;\r\nx = a;|e = 1,\r\nx = a,|"},
  };
  RunSheet({&page}, [&](QWidget* window) {
    for (const auto& c : kCases) {
      In(c.button, c.user, "Cancel")(window);
      EXPECT_EQ(before, Held(page));
      In(c.button, c.user)(window);
      EXPECT_EQ(before = c.after, Held(page));
    }
    SetInput(input, {});  // whose names cannot be found
    for (const char* button : {kInput, kEquations}) Quietly(window, button);
    In(kOutput, NoUser)(window);
  });
  EXPECT_EQ(CTexts(), prompter.Take());
}

}  // namespace
}  // namespace vastra
