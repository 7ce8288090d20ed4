#include "vastra/platform/string.h"

#include <gtest/gtest.h>

namespace vastra {
namespace {

TEST(String, PartsEndAtTheEndOfTheString) {
  const CString text = "abc";
  const struct {
    int first, count;
    const char* mid;
  } cases[] = {{0, 3, "abc"}, {1, 1, "b"}, {1, 9, "bc"}, {3, 1, ""}, {9, 9, ""}, {-1, 2, "ab"}, {0, -1, ""}};
  for (const auto& c : cases) EXPECT_EQ(text.Mid(c.first, c.count), c.mid) << c.first;
  EXPECT_EQ(text.Left(9) + text.Right(2) + text.Right(9) + text.Right(-1), "abcbcabc");
}

TEST(String, KeepsEveryByte) {
  const CString zero("a\0b\xFF", 4);
  EXPECT_EQ((zero + "!").View(), std::string_view("a\0b\xFF!", 5));
  EXPECT_FALSE(zero == CString("a"));
  EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty());
}

TEST(String, TrimRemovesAllWhiteSpaceAndNothingElse) {
  const char* cases[][2] = {
      {" \t\n\v\f\r", ""}, {"\r\v\f\n\t a b \t\n\v\f\r", "a b"}, {"\xA0x\xA0", "\xA0x\xA0"}};
  for (const auto& [text, trimmed] : cases) {
    CString both = text;
    both.TrimRight();
    both.TrimLeft();
    EXPECT_EQ(both, trimmed);
  }
}

TEST(String, CompareNoCaseFoldsAsciiLettersOnly) {
  EXPECT_EQ(CString("AkZ").CompareNoCase("aKz"), 0);
  const char* less[][2] = {{"a", "B"}, {"A", "b"}, {"a", "ab"},  {"\xC4", "\xE4"},
                           {"@", "`"}, {"[", "{"}, {"z", "\x80"}};
  for (const auto& [left, right] : less) {
    EXPECT_LT(CString(left).CompareNoCase(right), 0) << left << " " << right;
    EXPECT_GT(CString(right).CompareNoCase(left), 0) << left << " " << right;
  }
}

TEST(String, FormatAcceptsAnyLengthAndAPartOfItself) {
  const std::string word(5000, 'x');
  CString text;
  text.Format("%s%d", word.c_str(), -1);
  text.Format("%s", text.Std().c_str());
  EXPECT_EQ(text.Std(), word + "-1");
}

}  // namespace
}  // namespace vastra
