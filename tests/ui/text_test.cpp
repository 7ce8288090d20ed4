#include "vastra/ui/text.h"

#include <gtest/gtest.h>

#include <QString>

namespace vastra {
namespace {

TEST(Text, InvalidUtf8IsShownAsLatin1) {
  const struct {
    const char* bytes;
    const char16_t* shown;
  } cases[] = {{"Ofen \xC3\xA4", u"Ofen \u00E4"},
               {"Ofen \xE4", u"Ofen \u00E4"},
               {"\xC3\xA4 and \xE4", u"\u00C3\u00A4 and \u00E4"},  // one bad byte: all of it
               {"cut \xC3", u"cut \u00C3"},
               {"", u""}};
  for (const auto& [bytes, shown] : cases) EXPECT_EQ(ToScreen(bytes).toStdU16String(), shown) << bytes;
  EXPECT_EQ(ToScreen(CString("a\0b", 3)).size(), 3);
  EXPECT_EQ(FromScreen(QString::fromUtf16(u"\u00E4")), "\xC3\xA4");
}

TEST(Text, APlaceCountsEachLineEndAndEachCharacterOnce) {
  const struct {
    const char* text;
    int offset, place;
  } cases[] = {{"a\r\nb", 3, 2},
               {"a\r\nb", 2, 1},
               {"a\nb", 2, 2},
               {"\xC3\xA4 = x", 5, 4},
               {"\xC3\xA4 = x", 1, 0},
               {"\xE4 = x", 4, 4},
               {"a\r\nb", 4, 3},
               {"", 0, 0},
               {"\xF0\x9F\x98\x80 = x", 7, 5}};
  for (const auto& [text, offset, place] : cases)
    EXPECT_EQ(ScreenPlace(text, offset), place) << text << " at " << offset;
  EXPECT_EQ(FromScreenLines(ToScreenLines("a\r\nb\r\n")), "a\r\nb\r\n");
}

}  // namespace
}  // namespace vastra
