#include "vastra/core/text_serializer.h"

#include <gtest/gtest.h>

#include <limits>

namespace vastra {
namespace {

template <class T>
std::string Stored(T value) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  CTextSerializer::TextSerialize(value, ar);
  ar.Close();
  return file.Bytes();
}

// What value is after it was read from text, and where the next part begins.
template <class T>
T Loaded(const std::string& text, T value, std::size_t next) {
  CMemFile file(text);
  CArchive ar(&file, CArchive::load);
  CTextSerializer::TextSerialize(value, ar);
  EXPECT_EQ(text.size() - next, ar.Remaining()) << text;
  return value;
}

CStringArray Array(std::initializer_list<const char*> texts) {
  CStringArray array;
  for (const char* text : texts) array.Add(text);
  return array;
}

TEST(TextSerializer, ReadsAFlagAsANumber) {
  EXPECT_EQ("Yes\r\n", Stored(2));
  EXPECT_EQ("No\r\n", Stored(0));
  struct {
    const char* text;
    int before, after;
    std::size_t next;
  } const kFlags[] = {
      {"Yes\r\nx", 0, 0, 5},       {"No\r\n", 3, 3, 4}, {"1\r\n2", 0, 1, 3},
      {" -7 apples\n", 0, -7, 11}, {"", 4, 4, 0},       {"4294967296\r\n", 1, 0, 12},
      {"4294967295", 1, -1, 10},   {"\r\n5", 6, 6, 2},
  };
  for (const auto& flag : kFlags)
    EXPECT_EQ(flag.after, Loaded(flag.text, flag.before, flag.next)) << flag.text;
}

TEST(TextSerializer, ReadsTheRestOfTheArchiveAsAText) {
  EXPECT_EQ("a\r\n", Stored(CString("a\r\n")));
  for (const std::size_t size : {0u, 1u, 1023u, 1024u, 1025u, 2048u, 9000u}) {
    const std::string text = std::string(size, 'x');
    EXPECT_EQ(text, Loaded(text, CString("before"), size).Std());
  }
}

TEST(TextSerializer, EndsALineOfTextsWithAnEmptyOne) {
  EXPECT_EQ("\r\n", Stored(CStringArray()));
  EXPECT_EQ("a\r\nb\r\n\r\n", Stored(Array({"a", "b"})));
  struct {
    const char* text;
    CStringArray texts;
    std::size_t next;
  } const kLists[] = {
      {"a\r\nb\r\n\r\nc", Array({"a", "b"}), 8},
      {"\r\na", {}, 2},
      {"a\nb", Array({"a", "b"}), 3},
      {"", {}, 0},
  };
  for (const auto& row : kLists) {
    EXPECT_EQ(row.texts, Loaded(row.text, Array({"before"}), row.next)) << row.text;
    CStringList before;
    before.AddTail("before");
    CStringArray texts;
    for (const CString& text : Loaded(row.text, before, row.next)) texts.Add(text);
    EXPECT_EQ(row.texts, texts) << row.text;
  }
}

TEST(TextReport, PrintsNumbersAsTheReportHasThem) {
  EXPECT_EQ("-1", CTextReport::Decimal(4294967295u));
  EXPECT_EQ("-2147483648", CTextReport::Decimal(std::numeric_limits<int>::min()));
  const std::pair<float, const char*> kFloats[] = {
      {0.1f, "0.100000"},
      {-0.0f, "-0.000000"},
      {2.5e-7f, "0.000000"},
      {16777217.0f, "16777216.000000"},
      {3.4028235e38f, "340282346638528859811704183484516925440.000000"}};
  for (const auto& [number, text] : kFloats) EXPECT_EQ(text, CTextReport::Fixed(number));
}

}  // namespace
}  // namespace vastra
