// The rules of pages and dialogs, without a window.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/screens/driver_form.h"
#include "tests/support/files.h"
#include "tests/support/names.h"
#include "vastra/screens/driver_form_rules.h"
#include "vastra/screens/equation_check_rules.h"
#include "vastra/screens/item_rules.h"
#include "vastra/screens/text_list_rules.h"

namespace vastra {
namespace {

std::string Told(const char* message) { return message ? message : ""; }

TEST(TextList, ReadingStopsAtAnEmptyLine) {
  const std::pair<CString, CString> kCases[] = {
      {"", ""},
      {"\r\na", ""},
      {"a\r\nb\r\n\r\nc", "a,b,"},
      {"a\n\nb", "a,"},
      {" a \r\n \r\nb\rc\r\r\nd\r", " a , ,b\rc\r,d\r,"},
      {"\xC3\xA9\r\n\xE9\n", "\xC3\xA9,\xE9,"},
      {CString("a\0b\r\n", 5), CString("a\0b,", 4)},
  };
  for (const auto& [text, lines] : kCases) EXPECT_EQ(Joined(LinesOf(text)), lines.Std()) << text.Std();
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
  CStringArray equations;
  const auto place = [&](const char* text) {  // of the fault: the statement and the offset
    const CTextFault fault = CheckEquations(text, Names({"a", "b"}), equations);
    return std::pair(fault.statement, fault.offset);
  };
  EXPECT_EQ(place(" \r\n\t"), std::pair(0, 0));
  EXPECT_EQ(place("x = c; y = d;"), std::pair(1, 4));
  EXPECT_EQ(place("x = 1;\r\ny =\r\n 2 +"), std::pair(2, 17));
  EXPECT_EQ(place("x = 1;;"), std::pair(2, 6));
  EXPECT_EQ(place("x = 1; /* \xC3\xA9 */ y = c"), std::pair(2, 20));
  EXPECT_EQ(place("x = 1; y /* */ = 2"), std::pair(0, 0));
  EXPECT_EQ(Joined(equations), "x = 1, y /* */ = 2,") << "those of the last text";
  EXPECT_EQ(CheckStatements(Names({"y = x", "x = a", "x = x + 1"}), Names({"a"})).statement, 0);
  EXPECT_EQ(CheckStatements(Names({"x = a", "y = b"}), Names({"a"})).offset, 4) << "in its statement";
}

TEST(ItemRules, TheFirstFaultIsTold) {
  const std::string kWrong = "Wrong Configuration!!\n ", kNaming = "WrongConfiguration!!\n",
                    kEquations = "/*Replace with your equations*/\r\nSampleIsValid= 1; \r\n";
  COutputConfig output;
  CSummaryConfig summary;
  const auto told = [&] { return Told(FirstFault(output)); };
  EXPECT_EQ(told(), kWrong + "You must give a name");
  output.m_name = summary.m_name = "x";
  EXPECT_EQ(told(), kWrong + "You must select a destination path");
  output.m_directory = summary.m_directory = "x";
  EXPECT_EQ(told(), kWrong + "To write logs you must enter the basic enable equations at least");
  output.m_enableEquations = summary.m_enableEquations = Names({"a"});
  EXPECT_EQ(told(), kWrong + "To write logs you must select at least 1 output variable");
  EXPECT_EQ(Told(FirstFault(summary)), kWrong + "To write summary you must enter at least 1 output variable");
  output.m_varNames = summary.m_varNames = Names({"a"});
  output.m_nameVariable = "System Time";
  EXPECT_EQ(told() + Told(FirstFault(summary)), "");
  output.m_usePrefix = 1;
  EXPECT_EQ(told(), kNaming + "You selected to use a prefix, please type the prefix to be used");
  output.m_nameVariable = "a";
  EXPECT_EQ(told(), "");
  output.m_nameVariable = "A";
  EXPECT_EQ(told(),
            kNaming + "The selected variable for the log names must be included in the logged variables");
  EXPECT_EQ(ProposedEnableText(output).Std(), kEquations + "WriteToLog= 1; \r\nRestartLog= 0;");
  EXPECT_EQ(ProposedEnableText(summary).Std(), kEquations + "WriteToSummary= 1; \r\nRestartSummary= 0;");
}

TEST(DriverForm, AHostileFormShowsWhatCanBeEditedAndKeepsTheRest) {
  static const std::string kEndless(100000, 'n');
  const struct {
    void (*change)(CModule& m);
    std::string shown;  // the rows, or the faults of their values; then the module
  } kCases[] = {
      {[](CModule& m) { m.form.fields = nullptr; }, "refused"},
      {[](CModule& m) { m.form.fieldCount = -2147483647 - 1; }, "refused"},
      {[](CModule& m) { m.form.fieldCount = 41; }, "refused"},
      {[](CModule& m) { m.form.fields = nullptr, m.form.fieldCount = 0; }, " 5|abc|1"},
      {[](CModule& m) { m.fields[0].name = m.fields[1].name = m.fields[2].name = nullptr; },
       "Setting=5|Setting (2)=abc|Setting (3)=1| 5|abc|1"},
      {[](CModule& m) { m.fields[0].name = m.fields[0].help = kEndless.c_str(), m.fields[1].textSize = 0; },
       std::string(60, 'n') + "...=5|Mode=1| 5|abc|1"},
      {[](CModule& m) { m.fields[0].kind = -1, m.fields[1].kind = 3, m.fields[2].choiceCount = -1; },
       " 5|abc|1"},
      {[](CModule& m) { m.fields[0].low = 101, m.fields[1].text = nullptr, m.fields[2].choices = nullptr; },
       " 5|abc|1"},
      {[](CModule& m) { m.fields[2].choiceCount = 2147483647; }, "Period=5|Name=abc| 5|abc|1"},
      {[](CModule& m) { std::memcpy(m.text, "12345678", 8); }, "Period=5|Name=1234567|Mode=1| 5|1234567|1"},
      {[](CModule& m) { std::memcpy(m.text, "12345\u20AC", 8); }, "Period=5|Name=12345|Mode=1| 5|12345|1"},
      {[](CModule& m) { std::memcpy(m.text, "\x80\xFF\r\n", 5); },
       "Period=5|Name=\x80\xFF\r\n|Mode=1| 5|\x80\xFF\r\n|1"},
      {[](CModule& m) { m.fields[0].number = 2147483647, m.fields[2].number = -1; },
       "Period=2147483647|Name=abc|Mode=-1|Period: enter a whole number from -5 to 100."
       "Mode: choose an entry of the list. 2147483647|abc|-1"},
      {[](CModule& m) { m.fields[2].number = 2; },
       "Period=5|Name=abc|Mode=-1|Mode: choose an entry of the list. 5|abc|2"},
  };
  for (const auto& c : kCases) {
    CModule module;
    c.change(module);
    std::string faults, shown;
    if (IsShowable(&module.form)) {
      const std::vector<CFormRow> rows = RowsOf(module.form);
      for (const CFormRow& row : rows) {
        faults += RowFault(row).Std();
        const bool isChoice = row.kind == driverFieldChoice;
        shown += row.name.Std() + "=" + (isChoice ? std::to_string(row.choice) : row.text.Std()) + "|";
      }
      if (faults.empty()) StoreRows(module.form, rows);
    }
    EXPECT_EQ(IsShowable(&module.form) ? shown + faults + " " + module.State() : "refused", c.shown);
  }
  EXPECT_FALSE(IsShowable(nullptr));
  CModule module;
  module.form.title = nullptr;
  EXPECT_EQ(FormTitle(module.form), "Driver");
}

TEST(DriverForm, ValuesAreCheckedAgainstTheirField) {
  CModule module;
  std::vector<CFormRow> rows = RowsOf(module.form);
  const auto fault = [&](std::size_t row, const CString& text) {
    rows[row].text = text;
    return RowFault(rows[row]).Std();
  };
  const std::string kPeriod = "Period: enter a whole number from -5 to 100.";
  for (const char* text : {"-6", "101", ""}) EXPECT_EQ(fault(0, text), kPeriod);
  EXPECT_EQ(fault(0, " 100 ") + fault(1, "1234567"), "");
  EXPECT_EQ(fault(1, "12345\u20AC"), "Name: enter at most 7 bytes; the text has 8.");
  EXPECT_EQ(fault(1, CString("a\0b", 3)), "Name: remove the character of code 0.");
  const std::pair<const char*, const char*> kHelp[] = {{"", "From -5 to 100."},
                                                       {"value2: height.", "Height. From -5 to 100."},
                                                       {"timeOut: 5: long.", "5: long. From -5 to 100."},
                                                       {"station:", "station: From -5 to 100."},
                                                       {"note: low.", "note: low. From -5 to 100."}};
  for (const auto& [help, shown] : kHelp) {
    rows[0].help = help;
    EXPECT_EQ(HelpOf(rows[0]), shown);
  }
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
