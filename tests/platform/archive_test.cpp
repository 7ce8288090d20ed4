#include "vastra/platform/archive.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/support/hex.h"

namespace vastra {
namespace {

TEST(Archive, LengthsHaveThreeFormsAndCountsTwo) {
  const struct {
    std::uint32_t number;
    const char *length, *count;
  } cases[] = {{0, "00", "0000"},
               {254, "FE", "FE00"},
               {255, "FF FF00", "FF00"},
               {0xFFFD, "FF FDFF", "FDFF"},
               {0xFFFE, "FF FFFF FEFF0000", "FEFF"},
               {0xFFFF, "FF FFFF FFFF0000", "FFFF FFFF0000"},
               {0x10000, "FF FFFF 00000100", "FFFF 00000100"}};
  for (const auto& c : cases) {
    std::string text;
    while (text.size() < c.number) text += std::to_string(text.size());
    text.resize(c.number);
    const std::string bytes =
        StoredBytes([&](CArchive& ar) { ar << CString(text), ar.WriteCount(c.number); });
    EXPECT_TRUE(bytes == Bytes(c.length) + text + Bytes(c.count)) << c.number;
    CString back;
    std::uint32_t count = 0;
    const auto load = [&](CArchive& ar) { ar >> back, count = ar.ReadCount(1); };
    EXPECT_EQ(LoadBytes(bytes + text, load), c.number);
    EXPECT_TRUE(back.Std() == text) << c.number;
    EXPECT_EQ(count, c.number);
  }
}

// One field of each kind.
struct CFields {
  void Serialize(CArchive& ar) {
    if (ar.IsStoring())
      ar << number << negative << word << byte << real << text;
    else
      ar >> number >> negative >> word >> byte >> real >> text;
    ar.Serialize(array);
    ar.Serialize(list);
  }
  UINT number = 0;
  std::int32_t negative = 0;
  std::uint16_t word = 0;
  std::uint8_t byte = 0;
  float real = 0;
  CString text;
  CStringArray array;
  CStringList list;
};

TEST(Archive, FieldsAreLittleEndianWithoutGapsAndAFileCutAtAnyByteIsRefused) {
  const std::string all =
      Bytes("04030201 FEFFFFFF 0605 07 0000C03F 03'abc' 0200 01'd' FF2C01 'e' x300 0100 01'f'");
  for (const std::size_t buffer : {1u, 3u, 4096u}) {
    CFields fields;
    const auto load = [&](std::size_t n) {
      LoadBytes(
          all.substr(0, n), [&](CArchive& ar) { (fields = {}).Serialize(ar); }, buffer);
    };
    for (std::size_t n = 0; n < all.size(); ++n) EXPECT_THROW(load(n), CArchiveException) << n;
    load(all.size());
    EXPECT_EQ(fields.number, 0x01020304u);
    EXPECT_EQ(fields.negative, -2);
    EXPECT_EQ(fields.real, 1.5f);
    EXPECT_EQ(Hex(StoredBytes([&](CArchive& ar) { fields.Serialize(ar); })), Hex(all));
  }
}

TEST(Archive, ACountLargerThanTheRestIsRefused) {
  using CLoad = std::function<void(CArchive&)>;
  CFields fields;
  const CLoad text = [&](CArchive& ar) { ar >> fields.text; };
  const CLoad array = [&](CArchive& ar) { ar.Serialize(fields.array); };
  const CLoad list = [&](CArchive& ar) { ar.Serialize(fields.list); };
  const CLoad pairs = [](CArchive& ar) { ar.ReadCount(8); };
  const std::pair<const char*, const CLoad&> cases[] = {
      {"FFFFFFFFFFFFFF00", text}, {"FFFE00", text},    {"0261", text},     {"FFFFFFFFFFFF00", array},
      {"FFFFFEFFFFFF00", list},   {"03000000", array}, {"03000000", list}, {"0100FFFFFFFFFFFFFF", pairs}};
  for (const auto& [bytes, load] : cases)
    EXPECT_THROW(LoadBytes(Bytes(bytes), load), CArchiveException) << bytes;
}

TEST(Archive, ListsAppendAndTheLargestCountIsNone) {
  CFields fields;
  fields.list.AddTail("0");
  LoadBytes(Bytes("0100 01'a' FFFFFFFFFFFF 01'b'"), [&](CArchive& ar) {
    ar.Serialize(fields.list);
    ar.Serialize(fields.list);
    ar >> fields.text;
  });
  EXPECT_EQ(fields.list.GetCount(), 2);
  EXPECT_EQ(fields.list.GetTail(), "a");
  EXPECT_EQ(fields.text, "b");
}

TEST(Archive, LinesEndAtEitherLineEndAndAtTheEndOfTheFile) {
  std::string lines;
  const auto read = [&](CArchive& ar) {
    for (CString line; ar.ReadString(line);) lines += "[" + line.Std() + "]";
  };
  LoadBytes("a\r\nb\n\n\rc\r\r\n\r\nd\r", read, 2);
  EXPECT_EQ(lines, "[a][b][][\rc\r][][d\r]");
}

}  // namespace
}  // namespace vastra
