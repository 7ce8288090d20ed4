#include "vastra/core/text_serializer.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/hex.h"
#include "tests/support/names.h"

namespace vastra {
namespace {

// The value after a load from text; next is the offset of the bytes that remain.
template <class T>
T Loaded(const std::string& text, T value, std::size_t next) {
  const auto left = LoadBytes(text, [&](CArchive& ar) { CTextSerializer::TextSerialize(value, ar); });
  EXPECT_EQ(left, text.size() - next) << text;
  return value;
}

// What a report stores of each field is tested with the reports of the configuration.
TEST(TextSerializer, ReadsAFlagAsANumber) {
  const struct {
    const char* text;
    int before, after;
    std::size_t next;
  } flags[] = {
      {"Yes\r\nx", 0, 0, 5},       {"No\r\n", 3, 3, 4}, {"1\r\n2", 0, 1, 3},
      {" -7 apples\n", 0, -7, 11}, {"", 4, 4, 0},       {"4294967296\r\n", 1, 0, 12},
      {"4294967295", 1, -1, 10},   {"\r\n5", 6, 6, 2},
  };
  for (const auto& flag : flags)
    EXPECT_EQ(Loaded(flag.text, flag.before, flag.next), flag.after) << flag.text;
}

TEST(TextSerializer, ReadsTheRestOfTheArchiveAsAString) {
  for (const std::size_t size : {0u, 1u, 1023u, 1024u, 1025u, 2048u, 9000u}) {
    const std::string text(size, 'x');
    EXPECT_EQ(Loaded(text, CString("before"), size).Std(), text);
  }
}

TEST(TextSerializer, AnEmptyLineEndsAListOfStrings) {
  const struct {
    const char* text;
    CStringArray texts;
    std::size_t next;
  } lists[] = {{"a\r\nb\r\n\r\nc", Names({"a", "b"}), 8},
               {"\r\na", {}, 2},
               {"a\nb", Names({"a", "b"}), 3},
               {"", {}, 0}};
  for (const auto& c : lists) {
    EXPECT_EQ(Loaded(c.text, Names({"before"}), c.next), c.texts) << c.text;
    CStringList before;
    before.AddTail("before");
    CStringArray texts;
    for (const CString& text : Loaded(c.text, before, c.next)) texts.Add(text);
    EXPECT_EQ(texts, c.texts) << c.text;
  }
}

TEST(TextReport, FormatsNumbers) {
  EXPECT_EQ(CTextReport::Decimal(4294967295u), "-1");
  EXPECT_EQ(CTextReport::Decimal(std::numeric_limits<int>::min()), "-2147483648");
  const std::pair<float, const char*> floats[] = {
      {0.1f, "0.100000"},
      {-0.0f, "-0.000000"},
      {2.5e-7f, "0.000000"},
      {3.4028235e38f, "340282346638528859811704183484516925440.000000"}};
  for (const auto& [number, text] : floats) EXPECT_EQ(CTextReport::Fixed(number), text);
}

}  // namespace
}  // namespace vastra
