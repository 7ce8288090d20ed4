// The rules of pages and dialogs, without a window.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/screens/driver_form.h"
#include "tests/support/files.h"
#include "tests/support/names.h"
#include "vastra/screens/driver_form_rules.h"
#include "vastra/screens/equation_check_rules.h"
#include "vastra/screens/input_page_rules.h"
#include "vastra/screens/item_rules.h"
#include "vastra/screens/scaler_rules.h"
#include "vastra/screens/text_list_rules.h"

namespace vastra {
namespace {

std::string Join(const CStringArray& array) {
  std::string all;
  for (const CString& text : array) all += text.Std() + "|";
  return all;
}

std::string Told(const char* message) { return message ? message : ""; }

TEST(TextList, ReadingStopsAtAnEmptyLine) {
  const std::pair<CString, CString> kCases[] = {
      {"", ""},
      {"\r\na", ""},
      {"a\r\nb\r\n\r\nc", "a|b|"},
      {"a\n\nb", "a|"},
      {" a \r\n \r\nb\rc\r\r\nd\r", " a | |b\rc\r|d\r|"},
      {"\xC3\xA9\r\n\xE9\n", "\xC3\xA9|\xE9|"},
      {CString("a\0b\r\n", 5), CString("a\0b|", 4)},
  };
  for (const auto& [text, lines] : kCases) EXPECT_EQ(Join(LinesOf(text)), lines.Std()) << text.Std();
}

TEST(TextList, NamesAreComparedByteForByte) {
  EXPECT_FALSE(HasRepeats(Names({"a", "A", "a "})));
  EXPECT_TRUE(HasRepeats(Names({"c", "b", "c"})));
  EXPECT_EQ(Join(MissingFrom(Names({"a", "b"}), Names({"c", "b", "A", "a ", "c"}))), "c|A|a |c|");
}

TEST(TextFile, OnlyRegularFilesUpToTheLimitAreReadAndWritten) {
  const CTempDir dir;
  const CString path = dir / "list", text("n\0w", 3);
  CString read;
  for (const CString& bad : {dir.Path(), dir / "none/list", CString("/dev/zero"), CString()})
    EXPECT_FALSE(ReadTextFile(bad, read) || WriteTextFile(bad, text)) << bad.Std();
  EXPECT_TRUE(WriteTextFile(path, text));
  {
    const CFileSizeLimit full(2);
    EXPECT_FALSE(WriteTextFile(path, "longer"));
  }
  EXPECT_TRUE(ReadTextFile(path, read));
  EXPECT_EQ(read, text);
  for (const bool isLonger : {false, true}) {
    std::filesystem::resize_file(path.Std(), kMaxTextFile + isLonger);
    EXPECT_EQ(ReadTextFile(path, read), !isLonger);
  }
}

TEST(EquationCheck, TheFirstFaultIsFoundByItsOffsetInTheText) {
  const struct {
    const char* text;
    int statement, offset;
  } kCases[] = {
      // a and b may be read
      {" \r\n\t", 0, 0},
      {"x = y;\r\ny = a;\r\n", 0, 0},
      {"x = c; y = d;", 1, 4},
      {"x = 1;\r\ny =\r\n 2 +", 2, 17},
      {"x = 1;;", 2, 6},
      {"x = 1; /* end */", 2, 16},
      {"x = 1; /* \xC3\xA9 */ y = c", 2, 20},
      {"A = 1; x = A; y = B", 3, 18},
      {"x = 1; y /* */ = 2", 0, 0},
  };
  CStringArray equations;
  for (const auto& c : kCases) {
    const CTextFault fault = CheckEquations(c.text, Names({"a", "b"}), equations);
    EXPECT_EQ(fault.statement, c.statement) << c.text;
    EXPECT_EQ(fault.offset, c.offset) << c.text;
  }
  EXPECT_EQ(Join(equations), "x = 1| y /* */ = 2|") << "those of the last text";
  EXPECT_EQ(CheckStatements(Names({"y = x", "x = a", "x = x + 1"}), Names({"a"})).statement, 0);
  EXPECT_EQ(CheckStatements(Names({"x = a", "y = b"}), Names({"a"})).offset, 4) << "in its statement";
}

TEST(InputPageRules, ControlsDependOnTheChoices) {
  // nodes, files, preprocess, period
  EXPECT_TRUE(EnabledControls(0, 0, 0) == (CInputControls{true, false, false, false}));
  EXPECT_TRUE(EnabledControls(1, 0, 1) == (CInputControls{false, true, false, true}));
  EXPECT_TRUE(EnabledControls(1, 1, 0) == (CInputControls{false, true, true, false}));
  EXPECT_TRUE(EnabledControls(0, 1, 1) == (CInputControls{true, false, true, true}));
}

TEST(InputPageRules, TheFirstFaultIsTold) {
  const std::string
      kNoNode = "If the logger is going to be connected to a PLC net, you must select one net node at least",
      kNoFiles = "If the logger is simulating you must select input logs files",
      kNoVariables =
          "If the preprocess input option is checked you must select one variable at least "
          "from the variables list";
  const std::pair<std::string, std::string> kCases[] = {
      // simulating, preprocess, a node, a file, a variable
      {"n", ""}, {"pf", kNoNode}, {"spn", kNoFiles}, {"sf", ""}, {"spf", kNoVariables}, {"pnv", ""},
  };
  for (const auto& [settings, told] : kCases) {
    CInputConfig config;
    for (const char setting : settings) {
      if (setting == 's') config.m_simulating = 1;
      if (setting == 'p') config.m_preprocess = 1;
      if (setting == 'n') config.m_plcNodes.AddTail(new CPlcNodeConfig);
      if (setting == 'f') config.m_inputFiles.AddTail("/a.rph");
      if (setting == 'v') config.m_preNewVars = Names({"b"});
    }
    EXPECT_EQ(Told(FaultOf(config)), told.empty() ? "" : "Wrong Configuration!!\n " + told) << settings;
  }
}

TEST(ItemRules, ABasisThatIsNotOfferedFallsBackToTheTime) {
  const auto offered = [](const CStringArray* names, const char* stored) {
    const CNameBasis basis = NameBasis(names, stored);
    return Join(basis.offered) + std::to_string(basis.selected);
  };
  const CStringArray names = Names({"a", "b"});
  EXPECT_EQ(offered(&names, "b"), "System Time|a|b|2");
  EXPECT_EQ(offered(&names, "B"), "System Time|a|b|0");
  EXPECT_EQ(offered(nullptr, "b"), "System Time|b|1");
  EXPECT_EQ(offered(nullptr, "System Time"), "System Time|0");
  EXPECT_EQ(offered(nullptr, ""), "System Time|0");
}

template <class TConfig>
void ExpectFaults(TConfig& item, const char* noVariables, const CString& proposed) {
  const auto told = [&] { return Told(FirstFault(item)); };
  const std::string kWrong = "Wrong Configuration!!\n ";
  EXPECT_EQ(told(), kWrong + "You must give a name");
  item.m_name = "x";
  EXPECT_EQ(told(), kWrong + "You must select a destination path");
  item.m_directory = "x";
  EXPECT_EQ(told(), kWrong + "To write logs you must enter the basic enable equations at least");
  item.m_enableEquations = Names({"a"});
  EXPECT_EQ(told(), kWrong + noVariables);
  item.m_varNames = Names({"a"});
  EXPECT_EQ(ProposedEnableText(item), "/*Replace with your equations*/\r\nSampleIsValid= 1; \r\n" + proposed);
}

TEST(ItemRules, TheFirstFaultIsTold) {
  CSummaryConfig summary;
  ExpectFaults(summary, "To write summary you must enter at least 1 output variable",
               "WriteToSummary= 1; \r\nRestartSummary= 0;");
  EXPECT_EQ(Told(FirstFault(summary)), "");
  COutputConfig output;
  ExpectFaults(output, "To write logs you must select at least 1 output variable",
               "WriteToLog= 1; \r\nRestartLog= 0;");
  const auto told = [&](const char* basis, const char* prefix) {
    output.m_nameVariable = basis;
    output.m_prefix = prefix;
    return Told(FirstFault(output));
  };
  EXPECT_EQ(told("System Time", ""), "");
  EXPECT_EQ(told("A", "p"),
            "WrongConfiguration!!\nThe selected variable for the log names must be included in the logged "
            "variables");
  output.m_usePrefix = 1;
  EXPECT_EQ(told("System Time", ""),
            "WrongConfiguration!!\nYou selected to use a prefix, please type the prefix to be used");
  EXPECT_EQ(told("System Time", "p") + told("a", ""), "");
}

TEST(ScalerRules, EachVariableHasTheFirstRowOfItsName) {
  CScalerConfig scaler;
  for (const auto& [name, scale] : {std::pair("b", 2.0f), {"gone", 3.0f}, {"A", 4.0f}, {"b", 5.0f}}) {
    CScalerConfigNode row;
    row.m_varName = name;
    row.m_scale = scale;
    scaler.m_nodes.Add(row);
  }
  const auto text = [](const CScalerConfig& rows) {
    std::string all;
    for (const CScalerConfigNode& row : rows.m_nodes)
      all += row.m_varName.Std() + " " + std::to_string(static_cast<int>(row.m_scale)) + "|";
    return all;
  };
  EXPECT_EQ(text(ScalerRowsOf(scaler, Names({"a", "b"}))), "a 1|b 2|");
  EXPECT_EQ(text(KeptScalerRows(scaler, Names({"a", "b"}))), "b 2|b 5|");
}

TEST(DriverForm, AHostileFormShowsWhatCanBeEditedAndKeepsTheRest) {
  static const std::string kEndless(100000, 'n');
  const struct {
    const char* what;
    void (*change)(CModule& m);
    const char* rows;               // null: the form is refused
    const char* state = "5|abc|1";  // after the rows are stored
    const char* fault = "";
  } kCases[] = {
      {"no fields", [](CModule& m) { m.form.fields = nullptr; }, nullptr},
      {"count below 0", [](CModule& m) { m.form.fieldCount = -2147483647 - 1; }, nullptr},
      {"count too high", [](CModule& m) { m.form.fieldCount = 41; }, nullptr},
      {"empty", [](CModule& m) { m.form.fields = nullptr, m.form.fieldCount = 0; }, ""},
      {"no names",
       [](CModule& m) {
         for (DriverField& field : m.fields) field.name = field.help = nullptr;
       },
       "Setting=5|Setting (2)=abc|Setting (3)=1|"},
      {"endless name, no room, too many choices",
       [](CModule& m) {
         m.fields[0].name = m.fields[0].help = kEndless.c_str();
         m.fields[1].textSize = 0, m.fields[2].choiceCount = 2147483647;
       },
       "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn...=5|"},
      {"unknown kinds, choices below 0",
       [](CModule& m) { m.fields[0].kind = -1, m.fields[1].kind = 3, m.fields[2].choiceCount = -1; }, ""},
      {"empty range, no buffer, no choices",
       [](CModule& m) { m.fields[0].low = 101, m.fields[1].text = nullptr, m.fields[2].choices = nullptr; },
       ""},
      {"text without end", [](CModule& m) { std::memcpy(m.text, "12345678", 8); },
       "Period=5|Name=1234567|Mode=1|", "5|1234567|1"},
      {"cut character", [](CModule& m) { std::memcpy(m.text, "12345\u20AC", 8); },
       "Period=5|Name=12345|Mode=1|", "5|12345|1"},
      {"not UTF-8", [](CModule& m) { std::memcpy(m.text, "\x80\xFF\r\n", 5); },
       "Period=5|Name=\x80\xFF\r\n|Mode=1|", "5|\x80\xFF\r\n|1"},
      {"number outside, choice below 0",
       [](CModule& m) { m.fields[0].number = 2147483647, m.fields[2].number = -1; },
       "Period=2147483647|Name=abc|Mode=-1|", "2147483647|abc|-1",
       "Period: enter a whole number from -5 to 100.Mode: choose an entry of the list."},
      {"choice outside", [](CModule& m) { m.fields[2].number = 2; }, "Period=5|Name=abc|Mode=-1|", "5|abc|2",
       "Mode: choose an entry of the list."},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    CModule module;
    c.change(module);
    ASSERT_EQ(IsShowable(&module.form), c.rows != nullptr);
    if (!c.rows) continue;
    const std::vector<CFormRow> rows = RowsOf(module.form);
    std::string faults, texts;
    for (const CFormRow& row : rows) {
      faults += RowFault(row).Std();
      const bool isChoice = row.kind == driverFieldChoice;
      texts += row.name.Std() + "=" + (isChoice ? std::to_string(row.choice) : row.text.Std()) + "|";
    }
    EXPECT_EQ(texts, c.rows);
    EXPECT_EQ(faults, c.fault);
    if (faults.empty()) StoreRows(module.form, rows);
    EXPECT_EQ(module.State(), c.state);
  }
  EXPECT_FALSE(IsShowable(nullptr));
  CModule module;
  module.form.title = nullptr;
  EXPECT_EQ(FormTitle(module.form), "Driver");
}

TEST(DriverForm, ValuesAreCheckedAgainstTheirField) {
  CModule module;
  std::vector<CFormRow> rows = RowsOf(module.form);
  const std::string kPeriod = "Period: enter a whole number from -5 to 100.";
  const struct {
    std::size_t row;
    std::string text, fault;
  } kCases[] = {{0, "-6", kPeriod},
                {0, "101", kPeriod},
                {0, "", kPeriod},
                {0, " 100 ", ""},
                {1, "1234567", ""},
                {1, "12345\u20AC", "Name: enter at most 7 bytes; the text has 8."},
                {1, std::string("a\0b", 3), "Name: remove the character of code 0."}};
  for (const auto& c : kCases) {
    rows[c.row].text = CString(c.text);
    EXPECT_EQ(RowFault(rows[c.row]).Std(), c.fault) << c.text;
  }
  rows[1].help.Empty();
  EXPECT_EQ(HelpOf(rows[0]).Std() + "|" + HelpOf(rows[1]).Std(), "How long. From -5 to 100.|");
  rows[0].help.Empty();
  EXPECT_EQ(HelpOf(rows[0]).Std(), "From -5 to 100.");
}

TEST(DriverForm, TheModuleChecksACopy) {
  CModule module;
  module.fields[0].kind = -1;  // so that rows and fields differ in their indexes
  std::vector<CFormRow> rows = RowsOf(module.form);
  EXPECT_EQ(CheckFault(module.form, rows), "");
  rows[0].text = "new";
  module.form.user = &module;
  module.form.check = [](const DriverField* fields, int count, void* user) -> const char* {
    EXPECT_EQ(count, 3);
    EXPECT_EQ(static_cast<CModule*>(user)->State(), "5|abc|1");
    EXPECT_STREQ(fields[1].text, "new");
    if (fields[2].number == 1) throw 1;
    return "refused";
  };
  EXPECT_EQ(CheckFault(module.form, rows), "The driver could not check the settings.");
  rows[1].choice = 0;
  EXPECT_EQ(CheckFault(module.form, rows), "refused");
  StoreRows(module.form, rows);
  EXPECT_EQ(module.State(), "5|new|0");
}

}  // namespace
}  // namespace vastra
