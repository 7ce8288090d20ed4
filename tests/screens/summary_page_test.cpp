// The page of the summaries and its dialog; what it has in common with that of the outputs is tested there.
#include "vastra/screens/summary_page.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "tests/support/recorder.h"

namespace vastra {
namespace {

std::string Line(const CSummaryConfig& c) {
  CString numbers;
  numbers.Format("|%u %u %d %d|", c.m_maxSummaries, c.m_maxSamples, c.m_saveCsv, c.m_saveRp);
  return c.m_name.Std() + "|" + c.m_enableText.Std() + "|" + Joined(c.m_enableEquations) + "|" +
         c.m_summaryText.Std() + "|" + Joined(c.m_summaryEquations) + "|" + Joined(c.m_varNames) +
         numbers.Std() + c.m_directory.Std();
}

TEST(SummaryPage, ANewSummaryIsCheckedInOrderAndStaysAsItIs) {
  const char* const kMaxSamples = "Maximum number\nof samples in a\n summary : ";
  const char* const kMaxSummaries = "Maximum number\nof summaries\nstored :";
  const char* const kNoVariables =
      "Wrong Configuration!!\n To write summary you must enter at least 1 output variable";
  CRecorder links;
  CInputPage input;
  CSmartPage smart;
  SetInput(input, {"a"});
  SetSmart(smart, {"s"});
  CSummaryPage page;
  page.SetInputPointer(&input);
  page.SetSmartPointer(&smart);
  CTestPrompter prompter;
  const auto add = [&](QWidget* dialog) {
    EXPECT_EQ("0", Find<QLineEdit>(dialog, kMaxSamples)->text().toStdString());
    Overcome(dialog, prompter,
             {{kNoName, Type(kMaxSummaries, "")},
              {kNoWhole, Type(kMaxSummaries, "3")},
              {kNoName, Type("Name:", "n")},
              {kNoPath, Type("Path:", "/p")},
              {kNoEquations, In("Enable Equations...", NoUser)},
              {kNoVariables,
               All({In("Variable List...", Press("->>")), In("Summary Equations...", Append("t = a + s;")),
                    Type(kMaxSamples, "4"), Press("Write Summary")})}});
  };
  const auto check = [&] {
    CMultiSummaryConfig config;
    config.m_summaries.AddTail(new CSummaryConfig);
    page.GetConfiguration(config);
    ASSERT_EQ(1, config.m_summaries.GetCount());
    EXPECT_EQ(
        "n|/*Replace with your equations*/\r\nSampleIsValid= 1; \r\nWriteToSummary= 1; \r\nRestartSummary= "
        "0;|"
        "/*Replace with your equations*/\r\nSampleIsValid= 1, \r\nWriteToSummary= 1, \r\nRestartSummary= 0,|"
        "t = a + s;|t = a + s,|a,s,|3 4 0 1|/p",
        Line(*config.m_summaries.GetHead()));
    page.SetConfiguration(config);
  };
  RunSheet({&page}, In("Add", add));
  check();
  RunSheet({&page}, All({Mark("Summaries", 0), In("Edit", NoUser)}));
  check();
}

}  // namespace
}  // namespace vastra
