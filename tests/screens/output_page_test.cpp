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

const char* const kProposed =
    "/*Replace with your equations*/\r\nSampleIsValid= 1; \r\nWriteToLog= 1; \r\nRestartLog= 0;";

std::string Line(const COutputConfig& c) {
  CString numbers;
  numbers.Format("|%d %u %u %d %d %d|", c.m_saveRp, c.m_maxLogs, c.m_maxSamples, c.m_saveCsv, c.m_dwordName,
                 c.m_usePrefix);
  return c.m_name.Std() + "|" + c.m_enableText.Std() + "|" + Joined(c.m_enableEquations) + "|" +
         Joined(c.m_varNames) + numbers.Std() + c.m_prefix.Std() + "|" + c.m_nameVariable.Std() + "|" +
         c.m_directory.Std();
}

COutputConfig Output(const char* name, const char* basis = "b", UINT number = 0) {
  COutputConfig output;
  output.m_name = name;
  output.m_enableText = "WriteToLog = b;";
  output.m_enableEquations = Names({"WriteToLog = b"});
  output.m_varNames = Names({"b", "a"});
  output.m_saveRp = output.m_dwordName = 1;
  output.m_maxLogs = number;
  output.m_maxSamples = 4294967295U - number;
  output.m_saveCsv = output.m_usePrefix = static_cast<int>(number % 2);
  output.m_prefix = CString("p_") + name;
  output.m_nameVariable = basis;
  output.m_directory = CString("/logs/") + name;
  return output;
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
  void Hold(const std::vector<COutputConfig>& outputs) {
    CMultiOutputConfig config;
    for (const COutputConfig& output : outputs) config.m_outputs.AddTail(new COutputConfig(output));
    m_page.SetConfiguration(config);
  }
  CTexts Held() const {
    CMultiOutputConfig config;
    config.m_outputs.AddTail(new COutputConfig);
    m_page.GetConfiguration(config);
    CTexts lines;
    for (const COutputConfig* output : config.m_outputs) lines.push_back(Line(*output));
    return lines;
  }
  // Edits the entry at row and leaves by end.
  void Edit(int row, const CUser& user, const char* end = "OK") {
    RunSheet({&m_page}, All({Mark("Outputs", row), In("Edit", user, end)}));
  }

  CRecorder m_links;
  CInputPage m_input;
  CSmartPage m_smart;
  COutputPage m_page;
  CTestPrompter m_prompter;
};

TEST_F(OutputPage, KeepsWhatIsNotEditedAsItIs) {
  std::vector<COutputConfig> outputs = {Output("x", "b", 7), Output("y", "System Time", 8),
                                        Output("z", "a", 9)};
  outputs[1].m_prefix.Empty();
  outputs[2].m_enableText.Empty();
  Hold({Output("gone")});
  Hold(outputs);
  for (const int row : {0, 1}) Edit(row, NoUser);
  Edit(2, In("Enable Equations...", NoUser, "Cancel"));
  Edit(0, Type("Name:", "given up"), "Cancel");
  outputs[2].m_enableText = kProposed;
  CTexts lines;
  for (const COutputConfig& output : outputs) lines.push_back(Line(output));
  EXPECT_EQ(lines, Held());
  RunSheet({&m_page}, [&](QWidget* window) {
    auto* list = Find<QListWidget>(window, "Outputs");
    Quietly(window, "Edit");
    Click(window, "Delete");
    EXPECT_EQ((CTexts{"x", "y", "z"}), Shown(list)) << "with nothing marked";
    list->setCurrentRow(0);
    Click(window, "Delete");
    Click(window, "Delete");
    WhileModal([&] { DoubleClick(list, 0); }, All({Type("Name:", "Y"), Press("OK")}));
    EXPECT_EQ((CTexts{"Y", "z"}), Shown(list));
  });
  EXPECT_EQ((CTexts{"Y" + lines[1].substr(1), lines[2]}), Held());
}

TEST_F(OutputPage, ANewOutputIsCheckedInOrder) {
  CTestChooser chooser;
  chooser.path = "/logs";
  Hold({Output("x")});
  RunSheet({&m_page}, [&](QWidget* window) {
    In("Add", [&](QWidget* dialog) {
      const auto* prefix = Find<QLineEdit>(dialog, kPrefix);
      EXPECT_EQ("0", Find<QLineEdit>(dialog, kMaxLogs)->text().toStdString());
      EXPECT_EQ("0", Find<QLineEdit>(dialog, kMaxSamples)->text().toStdString());
      Overcome(dialog, m_prompter,
               {{kNoName, Type(kMaxLogs, "4294967296")},
                {kNoWhole, All({Type(kMaxLogs, "4294967295"), Type(kMaxSamples, "")})},
                {kNoWhole, Type(kMaxSamples, "7")},
                {kNoName, Type("Name:", "new")},
                {kNoPath, Press("...")},
                {kNoEquations, In("Enable Equations...", Press("Parse"), "Cancel")},
                {kNoEquations, In("Enable Equations...", NoUser)},
                {kNoVariables, In("Variable List...", Press("->>"))}});
      EXPECT_FALSE(prefix->isEnabled());
      for (const bool isUsed : {true, false, true}) {
        Click(dialog, kPrefix);
        EXPECT_EQ(isUsed, prefix->isEnabled());
      }
      Overcome(dialog, m_prompter,
               {{kNoPrefix, All({Type(kPrefix, "p"), Press("Write Logs"), Press("Write Text Files")})}});
    })(window);
    EXPECT_EQ((CTexts{"x", "new"}), Shown(Find<QListWidget>(window, "Outputs")));
  });
  EXPECT_EQ("new|" + std::string(kProposed) +
                "|"
                "/*Replace with your equations*/\r\nSampleIsValid= 1, \r\nWriteToLog= 1, \r\nRestartLog= 0,|"
                "a,b,|1 4294967295 7 1 0 1|p|System Time|/logs",
            Held().at(1));
}

TEST_F(OutputPage, TheDwordBoxFollowsTheBasis) {
  const struct {
    const char* stored;
    std::vector<int> keys;
    bool isEnabled;
    const char* basis;
    int dword;
  } kCases[] = {
      {"b", {}, true, "b", 1},
      {"B", {}, false, "System Time", 1},
      {"", {}, false, "System Time", 1},
      {"System Time", {Qt::Key_Down}, true, "a", 1},
      {"b", {Qt::Key_Up, Qt::Key_Up}, false, "System Time", 0},
      {"a", {Qt::Key_Up, Qt::Key_Down}, true, "a", 0},
  };
  for (const auto& c : kCases) {
    Hold({Output("x", c.stored)});
    Edit(0, [&](QWidget* dialog) {
      for (const int key : c.keys)
        QTest::keyClick(Find<QComboBox>(dialog, kBasis), static_cast<Qt::Key>(key));
      EXPECT_EQ(c.isEnabled, Find<QAbstractButton>(dialog, kDword)->isEnabled()) << c.stored;
    });
    COutputConfig wanted = Output("x", c.basis);
    wanted.m_dwordName = c.dword;
    EXPECT_EQ(CTexts{Line(wanted)}, Held());
  }
}

TEST_F(OutputPage, TheBasisHasToBeLogged) {
  const auto enter = [](const char* basis) {
    return [=](QWidget* dialog) { Find<QComboBox>(dialog, kBasis)->setEditText(basis); };
  };
  Hold({Output("x")});
  Edit(0, [&](QWidget* dialog) {
    All({In("Variable List...", All({Mark("Selected Vars", 0), Press("Delete Variable")})), Press(kPrefix),
         Type(kPrefix, "")})(dialog);  // only the time cannot do without one
    Overcome(dialog, m_prompter,
             {{kNotLogged, enter("A")}, {kNotLogged, enter("system time")}, {kNotLogged, enter("a")}});
  });
  EXPECT_EQ(CTexts{"x|WriteToLog = b;|WriteToLog = b,|a,|1 0 4294967295 0 1 1||a|/logs/x"}, Held());
}

TEST_F(OutputPage, OffersWhatThePagesInFrontGive) {
  const std::tuple<CInputPage*, CSmartPage*, CTexts> kCases[] = {{nullptr, nullptr, {}},
                                                                 {&m_input, nullptr, {"a", "b"}},
                                                                 {nullptr, &m_smart, {"s"}},
                                                                 {&m_input, &m_smart, {"a", "b", "s"}}};
  SetSmart(m_smart, {"s"});
  Hold({Output("x")});
  for (const auto& [input, smart, offered] : kCases) {
    m_page.SetInputPointer(input);
    m_page.SetSmartPointer(smart);
    const auto look = [&, names = offered](QWidget* dialog) mutable {
      In("Variable List...", [&](QWidget* list) { EXPECT_EQ(names, Offered(list)); })(dialog);
      names.insert(names.begin(), "System Time");
      EXPECT_EQ(names, Bases(dialog));
    };
    Edit(0, look, "Cancel");
  }
}

TEST_F(OutputPage, WithoutNamesNothingOpensAndNothingIsLost) {
  const auto tryAll = [&] {
    for (const char* basis : {"b", "System Time"}) {
      Hold({Output("x", basis)});
      const CTexts before = Held();
      Edit(0, [&](QWidget* dialog) {
        for (const char* button : {"Variable List...", "Enable Equations..."}) Quietly(dialog, button);
        EXPECT_EQ(*basis == 'b' ? (CTexts{"System Time", "b"}) : CTexts{"System Time"}, Bases(dialog));
      });
      EXPECT_EQ(before, Held());
    }
  };
  SetSmart(m_smart, {"a"});  // as the input
  m_page.SetSmartPointer(&m_smart);
  tryAll();
  EXPECT_NE("", m_links.TakeFaults());
  SetInput(m_input, {});
  tryAll();
}

}  // namespace
}  // namespace vastra
