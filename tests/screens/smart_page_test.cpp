// The page of the variables that the host's own logic reads and writes.
#include "vastra/screens/smart_page.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "vastra/screens/input_page.h"

namespace vastra {
namespace {

TEST(SmartPage, EachDialogEditsItsPartOnOkAlone) {
  const std::string kInput = "Smart Input Variables... / ", kEquations = "Smart Equations... / ",
                    kOutput = "Smart Output Variables... / ";
  const auto before = Configured<CSmartConfig>(
      R"({"outputVars": ["o"], "equationText": "e = 1;", "inputVars": ["i"], "inputNames": ["kept"]})");
  const auto after = Configured<CSmartConfig>(
      R"({"equationText": "x = a;", "inputVars": ["i", "a"], "inputNames": ["kept"]})");
  const auto replaced = Configured<CSmartConfig>(
      R"({"outputVars": ["r"], "equationText": "r = 1;", "inputVars": ["r"], "inputNames": ["kept"]})");
  CInputPage input;
  input.SetConfiguration(Configured<CInputConfig>(R"({"preprocess": 1, "preNewVars": ["a"]})"));
  CSmartPage page;
  page.SetConfiguration(before);
  CSheetUser user;
  // Without an input page there is nothing to choose from.
  user.Run(page, {kInput + "Available Vars? / OK / " + kEquations + "OK / OK"});
  page.SetInputPointer(&input);
  user.Run(page, {kInput + "->> / Cancel / " + kEquations + "Equations=x = a; / Cancel / " + kOutput +
                  "Delete All / Cancel / OK"});
  EXPECT_EQ(Held(page, replaced), FieldsOf(before));
  user.Run(page, {kInput + "Available Vars?a, / ->> / OK / " + kEquations +
                      "Equations?e = 1; / Equations=x = a; / OK / " + kOutput +
                      "Variable List?o, / Delete All / OK",
                  [&](QWidget*) { input.SetConfiguration({}); },  // its names are not known
                  kInput + kEquations + kOutput + "OK / OK"});
  EXPECT_EQ(Held(page, replaced), FieldsOf(after));
}

}  // namespace
}  // namespace vastra
