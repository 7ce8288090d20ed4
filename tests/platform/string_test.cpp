#include "vastra/platform/string.h"

#include <gtest/gtest.h>

namespace vastra {
namespace {

TEST(String, PartsEndAtTheEndOfTheString) {
  const struct {
    int first, count;
    const char* mid;
  } cases[] = {{0, 3, "abc"}, {1, 1, "b"}, {1, 9, "bc"}, {3, 1, ""}, {9, 9, ""}, {-1, 2, "ab"}, {0, -1, ""}};
  for (const auto& c : cases) EXPECT_EQ(CString("abc").Mid(c.first, c.count), c.mid) << c.first;
  EXPECT_EQ(CString("abc").Right(2), "bc");
  EXPECT_EQ(CString("abc").Right(9), "abc");
  EXPECT_EQ(CString("abc").Right(-1), "");
  EXPECT_EQ(CString("abc").Left(9), "abc");
}

TEST(String, KeepsEveryByte) {
  const CString zero("a\0b\xFF", 4);
  EXPECT_EQ(zero.GetLength(), 4);
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
  const struct {
    const char *left, *right;
    int sign;
  } cases[] = {{"AkZ", "aKz", 0},    {"a", "B", -1}, {"b", "A", 1},  {"a", "ab", -1},
               {"\xC4", "\xE4", -1}, {"@", "`", -1}, {"[", "{", -1}, {"z", "\x80", -1}};
  for (const auto& c : cases) {
    const int order = CString(c.left).CompareNoCase(c.right);
    EXPECT_EQ((order > 0) - (order < 0), c.sign) << c.left << " " << c.right;
  }
}

TEST(String, FormatAcceptsAnyLengthAndAPartOfItself) {
  const std::string word(5000, 'x');
  CString text;
  text.Format("%s%d", word.c_str(), -1);
  EXPECT_EQ(text.Std(), word + "-1");
  text.Format("%s", text.Std().c_str());
  EXPECT_EQ(text.Std(), word + "-1");
}

}  // namespace
}  // namespace vastra
