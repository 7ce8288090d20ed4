#include "vastra/ui/text.h"

#include <gtest/gtest.h>

#include <QString>

#include <tuple>

namespace vastra {
namespace {

TEST(Text, InvalidUtf8IsShownAsLatin1) {
  const std::pair<CString, const char16_t*> kCases[] = {
      {"Ofen \xC3\xA4", u"Ofen \u00E4"},
      {"Ofen \xE4", u"Ofen \u00E4"},
      {"\xC3\xA4 and \xE4", u"\u00C3\u00A4 and \u00E4"},  // one bad byte: all of it
      {"cut \xC3", u"cut \u00C3"}};
  for (const auto& [bytes, shown] : kCases) EXPECT_EQ(ToScreen(bytes).toStdU16String(), shown);
  EXPECT_EQ(ToScreen(CString("a\0b", 3)).size(), 3);
}

TEST(Text, APlaceCountsEachLineEndAndEachCharacterOnce) {
  const std::tuple<const char*, int, int> kCases[] = {
      {"a\r\nb", 2, 1},       {"a\r\nb", 3, 2},   {"a\r\nb", 4, 3},
      {"a\nb", 2, 2},         {"", 0, 0},         {"\xC3\xA4 = x", 1, 0},
      {"\xC3\xA4 = x", 5, 4}, {"\xE4 = x", 4, 4}, {"\xF0\x9F\x98\x80 = x", 7, 5}};
  for (const auto& [text, offset, place] : kCases)
    EXPECT_EQ(ScreenPlace(text, offset), place) << text << " at " << offset;
  EXPECT_EQ(FromScreenLines(ToScreenLines("a\r\nb\r\n")), "a\r\nb\r\n");
}

}  // namespace
}  // namespace vastra
