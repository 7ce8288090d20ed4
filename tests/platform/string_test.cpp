#include "vastra/platform/string.h"

#include <gtest/gtest.h>

namespace vastra {
namespace {

TEST(String, PartsAreCutToTheText) {
  struct CCase {
    int first, count;
    const char* mid;
  };
  for (const CCase& c : {CCase{0, 3, "abc"}, CCase{1, 1, "b"}, CCase{1, 9, "bc"}, CCase{3, 1, ""},
                         CCase{9, 9, ""}, CCase{-1, 2, "ab"}, CCase{0, -1, ""}})
    EXPECT_EQ(c.mid, CString("abc").Mid(c.first, c.count).Std()) << c.first << " " << c.count;
  EXPECT_EQ("bc", CString("abc").Right(2).Std());
  EXPECT_EQ("abc", CString("abc").Right(9).Std());
  EXPECT_EQ("", CString("abc").Right(-1).Std());
  EXPECT_EQ("abc", CString("abc").Left(9).Std());
}

TEST(String, KeepsEveryByte) {
  const CString zero("a\0b\xFF", 4);
  EXPECT_EQ(4, zero.GetLength());
  EXPECT_EQ(std::string_view("a\0b\xFF!", 5), (zero + "!").View());
  EXPECT_FALSE(zero == CString("a"));
  EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty());
}

TEST(String, TrimTakesAllWhiteSpaceAndNothingElse) {
  const char* cases[][2] = {{"", ""}, {" \t\n\v\f\r", ""}, {" a b\r\n", "a b"}, {"\xA0x\xA0", "\xA0x\xA0"}};
  for (const auto& [text, trimmed] : cases) {
    CString both = text;
    both.TrimLeft();
    both.TrimRight();
    EXPECT_EQ(trimmed, both.Std());
  }
}

TEST(String, CaseIsIgnoredForLettersOfAsciiAlone) {
  struct CCase {
    const char *left, *right;
    int sign;
  };
  for (const CCase& c :
       {CCase{"Log.RPH", "lOG.rph", 0}, CCase{"a", "B", -1}, CCase{"b", "A", 1}, CCase{"a", "ab", -1},
        CCase{"\xC4", "\xE4", -1}, CCase{"@", "`", -1}, CCase{"z", "\x80", -1}}) {
    const int order = CString(c.left).CompareNoCase(c.right);
    EXPECT_EQ(c.sign, (order > 0) - (order < 0)) << c.left << " " << c.right;
  }
}

TEST(String, FormatHoldsAnyLength) {
  const std::string word(5000, 'x');
  CString text;
  text.Format("%s%d", word.c_str(), -1);
  EXPECT_EQ(word + "-1", text.Std());
  text.Format("%s", text.Std().c_str());  // a part of itself
  EXPECT_EQ(word + "-1", text.Std());
}

}  // namespace
}  // namespace vastra
