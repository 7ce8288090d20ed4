// The page of the variables that the host's own logic reads and writes.
#include "vastra/screens/smart_page.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"

namespace vastra {
namespace {

TEST(SmartPage, EachDialogEditsItsPartOnOkAlone) {
  const std::string kInput = "Smart Input Variables...", kEquations = "Smart Equations...",
                    kOutput = "Smart Output Variables...";
  CSmartConfig config;
  config.m_outputVars = Names({"o"});
  config.m_equations = Names({"e = 1"});
  config.m_equationText = "e = 1;";
  config.m_inputVars = Names({"i"});
  CSmartConfig filled = config;
  filled.m_inputNames = Names({"kept"});
  filled.m_outputVars = filled.m_inputVars = Names({"replaced"});
  CInputPage input;
  SetInput(input, {"a"});
  CSmartPage page;
  page.SetConfiguration(config);
  CSheetUser user;
  const auto expect = [&](const char* text) {
    return [&, text](QWidget*) { EXPECT_EQ(Held(page, filled), text); };
  };
  const char* const kBefore =
      "equations:e = 1,|inputNames:kept,|inputVars:i,|outputVars:o,|equationText:e = 1;|";

  // Without an input page there is nothing to choose from.
  user.Run({&page}, {kInput + " / Available Vars? / OK / " + kEquations + " / OK / OK"});
  page.SetInputPointer(&input);
  user.Run({&page}, {kInput,
                     "->>",
                     "Cancel",
                     kEquations,
                     "Equations=x = a;",
                     "Cancel",
                     kOutput,
                     "Delete All",
                     "Cancel",
                     expect(kBefore),
                     kInput,
                     "Available Vars?a,",
                     "->>",
                     "OK",
                     kEquations,
                     "Equations?e = 1;",
                     "Equations=x = a;",
                     "OK",
                     kOutput,
                     "Variable List?o,",
                     "Delete All",
                     "OK",
                     expect("equations:x = a,|inputNames:kept,|inputVars:i,a,|equationText:x = a;|"),
                     [&](QWidget*) { SetInput(input, {}); },  // its names are not known
                     kInput,
                     kEquations,
                     kOutput,
                     "OK",
                     "OK"});
}

}  // namespace
}  // namespace vastra
