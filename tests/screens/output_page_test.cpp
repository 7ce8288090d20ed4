// The page of the log outputs and its dialog.
#include "vastra/screens/output_page.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "tests/support/recorder.h"

namespace vastra {
namespace {

const char* const kBasis = "Name the logs based on :";
const char* const kDword = "Use the next variable to form a DWORD based name";
const char* const kPrefix = "Use prefix for the log names :";
const char* const kMaxLogs = "Maximum number of logs stored :";
const char* const kMaxSamples = "Maximum number of samples in a log : ";
const char* const kNoVariables =
    "Wrong Configuration!!\n To write logs you must select at least 1 output variable";
const char* const kNoPrefix =
    "WrongConfiguration!!\nYou selected to use a prefix, please type the prefix to be used";
const char* const kNotLogged =
    "WrongConfiguration!!\nThe selected variable for the log names must be included in the logged variables";

std::string Line(const COutputConfig& c) {
  CString numbers;
  numbers.Format("|%d %u %u %d %d %d|", c.m_saveRp, c.m_maxLogs, c.m_maxSamples, c.m_saveCsv, c.m_dwordName,
                 c.m_usePrefix);
  return c.m_name.Std() + "|" + c.m_enableText.Std() + "|" + Joined(c.m_enableEquations) + "|" +
         Joined(c.m_varNames) + numbers.Std() + c.m_prefix.Std() + "|" + c.m_nameVariable.Std() + "|" +
         c.m_directory.Std();
}

COutputConfig* NewOutput(const char* name, const char* basis = "b", UINT number = 0) {
  auto* output = new COutputConfig;
  output->m_name = name;
  output->m_enableText = "WriteToLog = b;";
  output->m_enableEquations = Names({"WriteToLog = b"});
  output->m_varNames = Names({"b", "a"});
  output->m_saveRp = output->m_dwordName = 1;
  output->m_maxLogs = number;
  output->m_maxSamples = 4294967295U - number;
  output->m_saveCsv = output->m_usePrefix = static_cast<int>(number % 2);
  output->m_prefix = CString("p_") + name;
  output->m_nameVariable = basis;
  output->m_directory = CString("/logs/") + name;
  return output;
}

void Select(QWidget* dialog, int index) {
  auto* combo = Find<QComboBox>(dialog, kBasis);
  while (combo->currentIndex() != index)
    QTest::keyClick(combo, combo->currentIndex() < index ? Qt::Key_Down : Qt::Key_Up);
}

CTexts Bases(QWidget* dialog) {
  auto* combo = Find<QComboBox>(dialog, kBasis);
  CTexts texts;
  for (int i = 0; i < combo->count(); ++i) texts.push_back(combo->itemText(i).toStdString());
  return texts;
}

class OutputPage : public testing::Test {
 protected:
  OutputPage() {
    SetInput(m_input, {"a", "b"});
    m_page.SetInputPointer(&m_input);
  }
  ~OutputPage() override { EXPECT_EQ(CTexts(), m_prompter.Take()); }
  void Hold(std::initializer_list<COutputConfig*> outputs) {
    CMultiOutputConfig config;
    for (COutputConfig* output : outputs) config.m_outputs.AddTail(output);
    m_page.SetConfiguration(config);
  }
  CTexts Held() const {
    CMultiOutputConfig config;
    config.m_outputs.AddTail(NewOutput("old"));
    m_page.GetConfiguration(config);
    CTexts lines;
    for (const COutputConfig* output : config.m_outputs) lines.push_back(Line(*output));
    return lines;
  }
  // Edits the entry at row and leaves by end.
  void Edit(int row, const CUser& user, const char* end = "OK") {
    OnPage(m_page, [&](QWidget* page) {
      Find<QListWidget>(page, "Outputs")->setCurrentRow(row);
      In(page, "Edit", user, end);
    });
  }

  CRecorder m_links;
  CInputPage m_input;
  CSmartPage m_smart;
  COutputPage m_page;
  CTestPrompter m_prompter;
};

TEST_F(OutputPage, WhatGoesInComesOut) {
  const CTexts kLines = {
      "x|WriteToLog = b;|WriteToLog = b,|b,a,|1 7 4294967288 1 1 1|p_x|b|/logs/x",
      "y|WriteToLog = b;|WriteToLog = b,|b,a,|1 8 4294967287 0 1 0|p_y|System Time|/logs/y"};
  Hold({NewOutput("gone")});
  Hold({NewOutput("x", "b", 7), NewOutput("y", "System Time", 8)});
  EXPECT_EQ(kLines, Held());
  for (const int row : {0, 1}) Edit(row, [](QWidget*) {});
  EXPECT_EQ(kLines, Held()) << "changed by a dialog in which nothing was done";
  Edit(
      0, [](QWidget* dialog) { Type(dialog, "Name:", "given up"); }, "Cancel");
  EXPECT_EQ(kLines, Held());
}

TEST_F(OutputPage, ANewOutputIsCheckedInOrder) {
  CTestChooser chooser;
  chooser.path = "/logs";
  OnPage(m_page, [&](QWidget* page) {
    In(page, "Add", [&](QWidget* dialog) {
      const auto isRefused = [&](const char* box) { IsRefused(dialog, m_prompter, box); };
      const auto* prefix = Find<QLineEdit>(dialog, kPrefix);
      EXPECT_EQ("0 0", Typed(dialog, kMaxLogs) + " " + Typed(dialog, kMaxSamples));
      EXPECT_EQ(0, Find<QComboBox>(dialog, kBasis)->currentIndex());
      EXPECT_FALSE(Enabled(dialog, kDword) || prefix->isEnabled());
      Type(dialog, kMaxLogs, "4294967296");
      isRefused(kNoWhole);
      Type(dialog, kMaxLogs, "4294967295");
      Type(dialog, kMaxSamples, "");
      isRefused(kNoWhole);
      EXPECT_EQ(Find<QLineEdit>(dialog, kMaxSamples), dialog->focusWidget());
      Type(dialog, kMaxSamples, "7");
      isRefused(kNoName);
      Type(dialog, "Name:", "new");
      isRefused(kNoPath);
      Click(dialog, "...");
      isRefused(kNoEquations);
      In(dialog, "Enable Equations...", Write("WriteToLog = a;"));
      isRefused(kNoVariables);
      In(dialog, "Variable List...", TakeAll);
      for (const bool isUsed : {true, false, true}) {
        Check(dialog, kPrefix);
        EXPECT_EQ(isUsed, prefix->isEnabled());
      }
      isRefused(kNoPrefix);
      Type(dialog, kPrefix, "p");
      Check(dialog, "Write Logs");
      Check(dialog, "Write Text Files");
    });
    EXPECT_EQ(CTexts{"new"}, Shown(Find<QListWidget>(page, "Outputs")));
  });
  EXPECT_EQ(CTexts{"new|WriteToLog = a;|WriteToLog = a,|a,b,|1 4294967295 7 1 0 1|p|System Time|/logs"},
            Held());
}

TEST_F(OutputPage, TheProposedEquationsStayWhenTheEditorIsGivenUp) {
  Hold({NewOutput("x")});
  OnPage(m_page, [&](QWidget* page) {
    In(page, "Add", [&](QWidget* dialog) {
      Type(dialog, "Name:", "n");
      Type(dialog, "Path:", "/");
      In(dialog, "Variable List...", TakeAll);
      GiveUp(dialog, "Enable Equations...", [](QWidget* editor) { Click(editor, "Parse"); });
      IsRefused(dialog, m_prompter, kNoEquations);
      In(dialog, "Enable Equations...", [](QWidget*) {});
    });
  });
  EXPECT_EQ(
      "n|/*Replace with your equations*/\r\nSampleIsValid= 1; \r\nWriteToLog= 1; \r\nRestartLog= 0;|"
      "/*Replace with your equations*/\r\nSampleIsValid= 1, \r\nWriteToLog= 1, \r\nRestartLog= 0,|"
      "a,b,|0 0 0 0 0 0||System Time|/",
      Held().at(1));
}

TEST_F(OutputPage, TheDwordBoxFollowsTheBasis) {
  const struct {
    const char* stored;
    std::vector<int> selected;
    bool isEnabled;
    const char* basis;
    int dword;
  } kCases[] = {
      {"b", {}, true, "b", 1},
      {"B", {}, false, "System Time", 1},
      {"", {}, false, "System Time", 1},
      {"System Time", {1}, true, "a", 1},
      {"b", {0}, false, "System Time", 0},
      {"b", {0, 2}, true, "b", 0},
  };
  for (const auto& c : kCases) {
    Hold({NewOutput("x", c.stored)});
    Edit(0, [&](QWidget* dialog) {
      for (const int index : c.selected) Select(dialog, index);
      EXPECT_EQ(c.isEnabled, Enabled(dialog, kDword)) << c.stored;
    });
    const std::unique_ptr<COutputConfig> wanted(NewOutput("x", c.basis));
    wanted->m_dwordName = c.dword;
    EXPECT_EQ(CTexts{Line(*wanted)}, Held());
  }
}

TEST_F(OutputPage, ABasisThatIsNotLoggedIsRefused) {
  Hold({NewOutput("x")});
  Edit(0, [&](QWidget* dialog) {
    In(dialog, "Variable List...", [](QWidget* list) {
      Find<QListWidget>(list, "Selected Vars")->setCurrentRow(0);
      Click(list, "Delete Variable");
    });
    IsRefused(dialog, m_prompter, kNotLogged);
    auto* basis = Find<QComboBox>(dialog, kBasis);
    basis->setEditText("A");
    IsRefused(dialog, m_prompter, kNotLogged);
    basis->setEditText("a");
  });
  EXPECT_EQ(CTexts{"x|WriteToLog = b;|WriteToLog = b,|a,|1 0 4294967295 0 1 0|p_x|a|/logs/x"}, Held());
}

TEST_F(OutputPage, OffersWhatThePagesInFrontGive) {
  const struct {
    CInputPage* input;
    CSmartPage* smart;
    CTexts names;
  } kCases[] = {{nullptr, nullptr, {}},
                {&m_input, nullptr, {"a", "b"}},
                {nullptr, &m_smart, {"s"}},
                {&m_input, &m_smart, {"a", "b", "s"}}};
  SetSmart(m_smart, {"s"});
  Hold({NewOutput("x")});
  for (auto c : kCases) {
    m_page.SetInputPointer(c.input);
    m_page.SetSmartPointer(c.smart);
    Edit(
        0,
        [&](QWidget* dialog) {
          In(dialog, "Variable List...", [&](QWidget* list) { EXPECT_EQ(c.names, Offered(list)); });
          In(dialog, "Enable Equations...", Write(c.smart ? "x = s;" : "x = 1;"));
          c.names.insert(c.names.begin(), "System Time");
          EXPECT_EQ(c.names, Bases(dialog));
        },
        "Cancel");
  }
}

TEST_F(OutputPage, WithoutNamesNothingOpensAndNothingIsLost) {
  const auto tryAll = [&] {
    Hold({NewOutput("x")});
    const CTexts before = Held();
    Edit(0, [](QWidget* dialog) {
      Quietly(dialog, "Variable List...");
      Quietly(dialog, "Enable Equations...");
      EXPECT_TRUE(Enabled(dialog, kDword));
    });
    EXPECT_EQ(before, Held());
  };
  SetSmart(m_smart, {"a"});  // as the input
  m_page.SetSmartPointer(&m_smart);
  tryAll();
  EXPECT_NE("", m_links.TakeFaults());
  SetInput(m_input, {});
  tryAll();
}

TEST_F(OutputPage, DeletingAndEditingKeepTheOthersAsTheyAre) {
  Hold({NewOutput("x", "a", 1), NewOutput("y", "b", 2), NewOutput("z", "System Time", 3)});
  const CTexts before = Held();
  OnPage(m_page, [&](QWidget* page) {
    auto* list = Find<QListWidget>(page, "Outputs");
    EXPECT_EQ((CTexts{"x", "y", "z"}), Shown(list));
    Quietly(page, "Edit");
    Click(page, "Delete");
    EXPECT_EQ(3, list->count()) << "with nothing marked";
    list->setCurrentRow(0);
    Click(page, "Delete");
    Click(page, "Delete");
    EXPECT_EQ((CTexts{"y", "z"}), Shown(list));
  });
  EXPECT_EQ((CTexts{before[1], before[2]}), Held());
  OnPage(m_page, [&](QWidget* page) {
    auto* list = Find<QListWidget>(page, "Outputs");
    const QPoint first = list->visualItemRect(list->item(0)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, first);
    WhileModal([&] { QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, first); },
               [](QWidget* dialog) {
                 Type(dialog, "Name:", "Y");
                 Click(dialog, "OK");
               });
    EXPECT_EQ((CTexts{"Y", "z"}), Shown(list));
  });
  EXPECT_EQ((CTexts{"Y" + before[1].substr(1), before[2]}), Held());
}

}  // namespace
}  // namespace vastra
