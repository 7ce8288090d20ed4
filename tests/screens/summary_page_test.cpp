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

class SummaryPage : public testing::Test {
 protected:
  SummaryPage() {
    SetInput(m_input, {"a"});
    SetSmart(m_smart, {"s"});
    m_page.SetInputPointer(&m_input);
    m_page.SetSmartPointer(&m_smart);
  }
  CTexts Held() const {
    CMultiSummaryConfig config;
    config.m_summaries.AddTail(new CSummaryConfig);
    m_page.GetConfiguration(config);
    CTexts lines;
    for (const CSummaryConfig* summary : config.m_summaries) lines.push_back(Line(*summary));
    return lines;
  }

  CRecorder m_links;
  CInputPage m_input;
  CSmartPage m_smart;
  CSummaryPage m_page;
  CTestPrompter m_prompter;
};

TEST_F(SummaryPage, WhatGoesInComesOut) {
  CMultiSummaryConfig config;
  auto* summary = new CSummaryConfig;
  config.m_summaries.AddTail(summary);
  summary->m_name = "day";
  summary->m_enableText = "WriteToSummary = a;";
  summary->m_enableEquations = Names({"WriteToSummary = a"});
  summary->m_summaryText = "x = s;";
  summary->m_summaryEquations = Names({"x = s"});
  summary->m_varNames = Names({"x", "a"});
  summary->m_maxSummaries = 5;
  summary->m_saveCsv = 1;
  summary->m_directory = "/days";
  m_page.SetConfiguration(config);
  const CTexts kLines = {"day|WriteToSummary = a;|WriteToSummary = a,|x = s;|x = s,|x,a,|5 4000 1 0|/days"};
  EXPECT_EQ(kLines, Held());
  OnPage(m_page, [](QWidget* page) {
    Find<QListWidget>(page, "Summaries")->setCurrentRow(0);
    In(page, "Edit", [](QWidget*) {});
  });
  EXPECT_EQ(kLines, Held()) << "changed by a dialog in which nothing was done";
}

TEST_F(SummaryPage, ANewSummaryIsCheckedInOrder) {
  const char* kMaxSamples = "Maximum number\nof samples in a\n summary : ";
  const char* kMaxSummaries = "Maximum number\nof summaries\nstored :";
  const auto shows = [](const char* text) {
    return [=](QWidget* editor) { EXPECT_EQ(text, Written(editor)); };
  };
  OnPage(m_page, [&](QWidget* page) {
    In(page, "Add", [&](QWidget* dialog) {
      const auto isRefused = [&](const char* box) { IsRefused(dialog, m_prompter, box); };
      EXPECT_EQ("0 0", Typed(dialog, kMaxSamples) + " " + Typed(dialog, kMaxSummaries));
      Type(dialog, kMaxSummaries, "");
      isRefused(kNoWhole);
      Type(dialog, kMaxSummaries, "3");
      Type(dialog, kMaxSamples, "4");
      isRefused(kNoName);
      Type(dialog, "Name:", "n");
      isRefused(kNoPath);
      Type(dialog, "Path:", "/p");
      GiveUp(dialog, "Enable Equations...",
             shows("/*Replace with your equations*/\nSampleIsValid= 1; \nWriteToSummary= 1; \n"
                   "RestartSummary= 0;"));
      isRefused(kNoEquations);
      In(dialog, "Enable Equations...", Write("WriteToSummary = s;"));
      isRefused("Wrong Configuration!!\n To write summary you must enter at least 1 output variable");
      In(dialog, "Variable List...", TakeAll);
      GiveUp(dialog, "Summary Equations...", shows(""));
      In(dialog, "Summary Equations...", Write("t = a;"));
      Check(dialog, "Write Summary");
    });
  });
  EXPECT_EQ(CTexts{"n|WriteToSummary = s;|WriteToSummary = s,|t = a;|t = a,|a,s,|3 4 0 1|/p"}, Held());
}

TEST_F(SummaryPage, WithoutNamesNothingOpens) {
  SetInput(m_input, {});
  OnPage(m_page, [](QWidget* page) {
    GiveUp(page, "Add", [](QWidget* dialog) {
      for (const char* button : {"Summary Equations...", "Variable List...", "Enable Equations..."})
        Quietly(dialog, button);
    });
  });
  EXPECT_EQ(CTexts(), m_prompter.Take());
}

}  // namespace
}  // namespace vastra
