// What the list dialogs and the equation editor check and write, without a window.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/files.h"
#include "tests/support/names.h"
#include "vastra/screens/equation_check_rules.h"
#include "vastra/screens/text_list_rules.h"

namespace vastra {
namespace {

std::string Join(const CStringArray& array) {
  std::string all;
  for (const CString& text : array) all += text.Std() + "|";
  return all;
}

TEST(TextList, AnEmptyLineEndsWhatIsRead) {
  const struct {
    const char *text, *lines;
  } kCases[] = {
      {"", ""},
      {"\r\n", ""},
      {"a", "a|"},
      {"a\r\nb\r\n\r\n", "a|b|"},
      {"a\nb\n", "a|b|"},
      {"a\r\n\r\nb\r\n", "a|"},
      {"a\n\nb", "a|"},
      {"\r\na", ""},
      {" a \r\n \r\nb", " a | |b|"},
      {"a\rb\r\nc\r", "a\rb|c\r|"},
      {"a\r\r\nb", "a\r|b|"},
      {"\xC3\xA9\r\n\xE9\r\n", "\xC3\xA9|\xE9|"},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.lines, Join(LinesOf(c.text))) << c.text;
  EXPECT_EQ(std::string("a\0b|", 4), Join(LinesOf(CString("a\0b\r\n", 5))));
}

TEST(TextList, NamesAreTheSameOnlyByteForByte) {
  const struct {
    CStringArray present, names;
    bool hasRepeats;  // in names
    const char* missing;
  } kCases[] = {
      {{}, {}, false, ""},
      {Names({"a"}), Names({"b", "a", "A", "a "}), false, "b|A|a |"},
      {Names({"a", "b"}), Names({"c", "b", "c"}), true, "c|c|"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(c.hasRepeats, HasRepeats(c.names));
    EXPECT_EQ(c.missing, Join(MissingFrom(c.present, c.names)));
  }
}

TEST(TextFile, OnlyAFileThatIsNoLongerThanAListIsRead) {
  const CTempDir dir;
  WriteBytes(dir / "list", "a\r\n");
  WriteBytes(dir / "longest", "");
  std::filesystem::resize_file((dir / "longest").Std(), kMaxTextFile);
  WriteBytes(dir / "longer", "");
  std::filesystem::resize_file((dir / "longer").Std(), kMaxTextFile + 1);
  const struct {
    CString path;
    std::size_t length;  // 0: not read
  } kCases[] = {{dir / "list", 3},
                {dir / "longest", kMaxTextFile},
                {dir / "longer", 0},
                {dir / "none", 0},
                {dir.Path(), 0},
                {"/dev/zero", 0},
                {"", 0}};
  for (const auto& c : kCases) {
    CString text;
    EXPECT_EQ(c.length != 0, ReadTextFile(c.path, text)) << c.path.Std();
    EXPECT_EQ(c.length, text.View().size()) << c.path.Std();
  }
}

TEST(TextFile, AnExportThatFailsLeavesWhatWasThere) {
  const CTempDir dir;
  const CString path = dir / "list.txt";
  WriteBytes(path, "old");
  std::filesystem::create_symlink("list.txt", (dir / "link").Std());
  {
    const CFileSizeLimit full(2);
    EXPECT_FALSE(WriteTextFile(path, "newer"));
  }
  EXPECT_EQ("old", ReadBytes(path));
  EXPECT_TRUE(WriteTextFile(dir / "link", CString("n\0w", 3)));
  EXPECT_EQ(std::string("n\0w", 3), ReadBytes(path)) << "the link was replaced, not the file";
  EXPECT_TRUE(WriteTextFile(path, ""));
  EXPECT_EQ("", ReadBytes(path));
  for (const CString& bad : {dir.Path(), dir / "none/list", CString("/dev/null"), CString()})
    EXPECT_FALSE(WriteTextFile(bad, "x")) << bad.Std();
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator(dir.Path().Std()), {})) << "left-overs";
}

TEST(EquationCheck, TheFirstFaultIsFoundByItsOffsetInTheWholeText) {
  const struct {
    const char *text, *equations;
    int statement, offset;
  } kCases[] = {
      // a and b may be read
      {"", "", 0, 0},
      {" \r\n\t", "", 0, 0},
      {"x = a + b; y = x", "x = a + b| y = x|", 0, 0},
      {"x = y;\r\ny = a;\r\n", "x = y|\r\ny = a|", 0, 0},
      {"x = c", "x = c|", 1, 4},
      {"x = c; y = d;", "x = c| y = d|", 1, 4},
      {"x = 1;\r\ny = 2;\r\nz = nope + 1;\r\n", "x = 1|\r\ny = 2|\r\nz = nope + 1|", 3, 20},
      {"x = 1;\r\ny =\r\n 2 +", "x = 1|\r\ny =\r\n 2 +|", 2, 17},
      {"x = a\r\n", "x = a|", 0, 0},
      {"x = \r\n", "x =|", 1, 3},
      {"x = 1;;", "x = 1||", 2, 6},
      {"x = 1; /* end */", "x = 1| /* end */|", 2, 16},
      {"x = \xC3\xA9", "x = \xC3\xA9|", 1, 4},
      {"x = 1; /* \xC3\xA9 */ y = c", "x = 1| /* \xC3\xA9 */ y = c|", 2, 20},
      {"A = 1; x = A; y = B", "A = 1| x = A| y = B|", 3, 18},
      {"x = 1; y /* */ = 2", "x = 1| y /* */ = 2|", 0, 0},
  };
  for (const auto& c : kCases) {
    CStringArray equations = Names({"left from before"});
    const CTextFault fault = CheckEquations(c.text, Names({"a", "b"}), equations);
    EXPECT_EQ(c.statement, fault.statement) << c.text;
    EXPECT_EQ(c.offset, fault.offset) << c.text;
    EXPECT_EQ(c.equations, Join(equations)) << c.text;
  }
}

TEST(EquationCheck, StatementsMayReadWhatAnyOfThemAssigns) {
  const struct {
    CStringArray equations;
    int statement, offset;
  } kCases[] = {
      // a may be read
      {{}, 0, 0},
      {Names({"y = x", "x = a", "x = x + 1"}), 0, 0},
      {Names({"x = a", "y = b", "z = c"}), 2, 4},
      {Names({"/* old */ x\n = a", " y = x"}), 0, 0},
      {Names({"x = a", "a"}), 2, 1},
      {Names({""}), 1, 0},
      {Names({"A = 1", "x = a + A"}), 0, 0},
  };
  for (const auto& c : kCases) {
    const CTextFault fault = CheckStatements(c.equations, Names({"a"}));
    EXPECT_EQ(c.statement, fault.statement) << Join(c.equations);
    EXPECT_EQ(c.offset, fault.offset) << Join(c.equations);
  }
}

TEST(EquationCheck, ATargetIsTheLastWordBeforeTheFirstSign) {
  const struct {
    const char *equation, *target;
  } kCases[] = {{"x = a", "x"},
                {"x=y=z", "x"},
                {" \r\n x  = a", "x"},
                {"/* c */ x = 1", "x"},
                {"/* c\nx = 1", "x"},
                {"x y = 1", "y"},
                {"x", ""},
                {"", ""},
                {"= 1", ""},
                {"\xC3\xA9 x == 1", "x"},
                {"x\ty = 1", "x\ty"}};
  for (const auto& c : kCases) EXPECT_EQ(c.target, TargetName(c.equation)) << c.equation;
}

}  // namespace
}  // namespace vastra
