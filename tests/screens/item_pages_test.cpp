// The pages of the log outputs and of the summaries, and their dialogs.
#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "tests/support/recorder.h"
#include "vastra/screens/output_page.h"
#include "vastra/screens/summary_page.h"

namespace vastra {
namespace {

const std::string kBasis = "Name the logs based on :",
                  kDword = "Use the next variable to form a DWORD based name",
                  kPrefix = "Use prefix for the log names :", kMaxLogs = "Maximum number of logs stored :",
                  kMaxSamples = "Maximum number of samples in a log : ", kWrong = "!Wrong Configuration!!\n ",
                  kNoWhole = "!Please enter a whole number from 0 to 4294967295.",
                  kNoName = kWrong + "You must give a name",
                  kNoPath = kWrong + "You must select a destination path",
                  kNoEquations = kWrong + "To write logs you must enter the basic enable equations at least";

COutputConfig Output(const char* name, const char* basis = "b") {
  COutputConfig output;
  output.m_name = name;
  output.m_enableText = "WriteToLog = b;";
  output.m_enableEquations = Names({"WriteToLog = b"});
  output.m_varNames = Names({"b", "a"});
  output.m_saveRp = output.m_dwordName = output.m_usePrefix = 1;
  output.m_maxLogs = 7;
  output.m_maxSamples = 4294967295U;
  output.m_prefix = "p";
  output.m_nameVariable = basis;
  output.m_directory = "/logs";
  return output;
}

CMultiOutputConfig Outputs(const std::vector<COutputConfig>& all) {
  CMultiOutputConfig config;
  for (const COutputConfig& output : all) config.m_outputs.AddTail(new COutputConfig(output));
  return config;
}

std::string Bases(QWidget* dialog) {
  const auto* combo = Find<QComboBox>(dialog, kBasis.c_str());
  std::string texts;
  for (int i = 0; i < combo->count(); ++i) texts += combo->itemText(i).toStdString() + ",";
  return texts;
}

class ItemPages : public testing::Test {
 protected:
  ItemPages() {
    SetInput(m_input, {"a", "b"});
    SetSmart(m_smart, {"s"});
    m_page.SetInputPointer(&m_input);
  }
  void Hold(const std::vector<COutputConfig>& outputs) { m_page.SetConfiguration(Outputs(outputs)); }
  std::string Held() const { return vastra::Held<CMultiOutputConfig>(m_page, Outputs({Output("replaced")})); }
  // Edits the first output and closes the sheet.
  void Edit(const CSteps& steps) { m_user.Run({&m_page}, CSteps{"Outputs#0 / Edit"} + steps + CSteps{"OK"}); }

  CRecorder m_links;
  CInputPage m_input;
  CSmartPage m_smart;
  COutputPage m_page;
  CSummaryPage m_summaries;
  CSheetUser m_user;
};

TEST_F(ItemPages, FieldsThatAreNotEditedAreKept) {
  std::vector<COutputConfig> outputs = {Output("x"), Output("y", "System Time"), Output("z", "a")};
  outputs[1].m_saveRp = 0;
  outputs[1].m_saveCsv = 1;
  outputs[2].m_enableText.Empty();
  Hold({Output("replaced")});
  Hold(outputs);
  m_user.Run({&m_page}, {"Edit / Delete / Outputs?x,y,z, / Outputs#0 / Edit / OK / Outputs#1 / Edit / OK / "
                         "Outputs#0 / Edit / Name:=cancelled / Variable List... / Delete All / OK / Cancel / "
                         "Outputs#2 / Edit / Enable Equations... / Equations=n = 1; / Cancel / OK / OK"});
  outputs[2].m_enableText =
      "/*Replace with your equations*/\r\nSampleIsValid= 1; \r\nWriteToLog= 1; \r\nRestartLog= 0;";
  EXPECT_EQ(Held(), TextOf(Outputs(outputs)));
  m_user.Run({&m_page}, {"Outputs#0 / Delete / Delete / Outputs?y,z, / Outputs##0 / Name:=Y / Variable "
                         "List... / Delete All / Available Vars#0 / -> / Cancel / OK / Outputs?Y,z, / OK"});
  outputs[1].m_name = "Y";
  EXPECT_EQ(Held(), TextOf(Outputs({outputs[1], outputs[2]})));
}

TEST_F(ItemPages, ANewOutputIsCheckedInOrder) {
  Hold({Output("x")});
  m_user.chooser.path = "/logs";
  const auto usesPrefix = [](bool isUsed) {
    return [=](QWidget* dialog) { EXPECT_EQ(Find<QLineEdit>(dialog, kPrefix.c_str())->isEnabled(), isUsed); };
  };
  m_user.Run(
      {&m_page},
      {"Add / " + kMaxLogs + "?0 / " + kMaxSamples + "?0 / OK / " + kNoName + " / " + kMaxLogs +
           "=4294967296 / OK / " + kNoWhole + " / " + kMaxLogs + "=4294967295 / " + kMaxSamples +
           "= / OK / " + kNoWhole + " / " + kMaxSamples + "=7 / OK / " + kNoName + " / Name:=new / OK / " +
           kNoPath + " / ... / OK / " + kNoEquations + " / Enable Equations... / Parse / Cancel / OK / " +
           kNoEquations + " / Enable Equations... / OK / OK / " + kWrong +
           "To write logs you must select at least 1 output variable / Variable List... / ->> / OK",
       usesPrefix(false), kPrefix, usesPrefix(true), kPrefix, usesPrefix(false),
       kPrefix +
           " / OK / !WrongConfiguration!!\nYou selected to use a prefix, please type the prefix to be used "
           "/ " +
           kPrefix + "=p / Write Logs / Write Text Files / OK / Outputs?x,new, / OK"});
  COutputConfig wanted = Output("new", "System Time");
  wanted.m_enableText =
      "/*Replace with your equations*/\r\nSampleIsValid= 1; \r\nWriteToLog= 1; \r\nRestartLog= 0;";
  wanted.m_enableEquations = Names(
      {"/*Replace with your equations*/\r\nSampleIsValid= 1", " \r\nWriteToLog= 1", " \r\nRestartLog= 0"});
  wanted.m_varNames = Names({"a", "b"});
  wanted.m_maxLogs = 4294967295U;
  wanted.m_maxSamples = 7;
  wanted.m_saveCsv = 1;
  wanted.m_dwordName = 0;
  EXPECT_EQ(Held(), TextOf(Outputs({Output("x"), wanted})));
}

TEST_F(ItemPages, TheDwordBoxDependsOnTheBasis) {
  const struct {
    const char* stored;
    CSteps steps;
    const char *state, *basis;
    int dword;
  } kCases[] = {
      {"b", {}, "x", "b", 1},
      {"B", {}, "-x", "System Time", 1},
      {"System Time", {kBasis + "=a"}, "x", "a", 1},
      {"b", {kBasis + "=System Time"}, "-", "System Time", 0},
      {"a", {kBasis + "=System Time", kBasis + "=a"}, "", "a", 0},
  };
  for (const auto& c : kCases) {
    Hold({Output("x", c.stored)});
    Edit(c.steps + CSteps{kDword + "?" + c.state + " / OK"});
    COutputConfig wanted = Output("x", c.basis);
    wanted.m_dwordName = c.dword;
    EXPECT_EQ(Held(), TextOf(Outputs({wanted}))) << c.stored;
  }
  // A typed basis has to be a logged variable; only the time needs a prefix.
  const std::string kNotLogged =
      "!WrongConfiguration!!\nThe selected variable for the log names must be included in the logged "
      "variables";
  Edit({kPrefix + "= / " + kBasis + "=A / OK / " + kNotLogged + " / " + kBasis + "=system time / OK / " +
        kNotLogged + " / " + kBasis + "=b / OK"});
}

TEST_F(ItemPages, TheDialogOffersTheVariablesOfThePages) {
  const std::tuple<CInputPage*, CSmartPage*, std::string> kCases[] = {{nullptr, nullptr, ""},
                                                                      {&m_input, nullptr, "a,b,"},
                                                                      {nullptr, &m_smart, "s,"},
                                                                      {&m_input, &m_smart, "a,b,s,"}};
  Hold({Output("x")});
  for (const auto& [input, smart, names] : kCases) {
    m_page.SetInputPointer(input);
    m_page.SetSmartPointer(smart);
    const auto look = [&, bases = "System Time," + names](QWidget* dialog) {
      EXPECT_EQ(Bases(dialog), bases);
    };
    Edit({look, "Variable List... / Available Vars?" + names + " / OK / Cancel"});
  }
  const std::string before = Held();
  const auto look = [](QWidget* dialog) { EXPECT_EQ(Bases(dialog), "System Time,b,") << "the stored basis"; };
  const CSteps steps = {look, "Variable List... / Enable Equations... / Path:?/logs / OK"};
  SetSmart(m_smart, {"a"});  // a name of the input
  Edit(steps);
  EXPECT_NE(m_links.TakeFaults(), "");
  SetInput(m_input, {});  // names that are not known
  CInputConfig unused;
  unused.m_preNewVars = Names({"p"});
  m_input.SetConfiguration(unused);
  Edit(steps);
  EXPECT_EQ(Held(), before);
}

TEST_F(ItemPages, ASummaryIsEditedTheSameWay) {
  const std::string kMost = "Maximum number\nof summaries\nstored :";
  m_summaries.SetInputPointer(&m_input);
  m_summaries.SetSmartPointer(&m_smart);
  m_user.Run(
      {&m_summaries},
      {"Add / " + kMost + "?0 / OK / " + kNoName + " / " + kMost + "= / OK / " + kNoWhole + " / " + kMost +
       "=3 / Name:=n / Path:=/p / OK / " + kNoEquations + " / Enable Equations... / OK / OK / " + kWrong +
       "To write summary you must enter at least 1 output variable / Variable List... / ->> / OK / Summary "
       "Equations... / Equations=t = a + s; / OK / Maximum number\nof samples in a\n summary : =4 / Write "
       "Summary / OK / Summaries##0 / OK / OK"});
  const std::string kProposed =
      "/*Replace with your equations*/\r\nSampleIsValid= 1; \r\nWriteToSummary= 1; \r\nRestartSummary= 0;";
  EXPECT_EQ((vastra::Held<CMultiSummaryConfig>(m_summaries)),
            "summaries[{enableEquations:/*Replace with your equations*/\r\nSampleIsValid= 1, "
            "\r\nWriteToSummary= 1, "
            "\r\nRestartSummary= 0,|summaryEquations:t = a + s,|varNames:a,b,s,|name:n|saveRp:1|maxSamples:4|"
            "maxSummaries:3|directory:/p|summaryText:t = a + s;|enableText:" +
                kProposed + "|}}");
  m_user.Run({&m_summaries}, {"Summaries#0 / Edit / Cancel / Delete / Summaries? / OK"});
}

}  // namespace
}  // namespace vastra
