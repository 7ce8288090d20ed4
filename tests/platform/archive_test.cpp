#include "vastra/platform/archive.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/support/hex.h"

namespace vastra {
namespace {

using CFieldsOf = std::function<void(CArchive&)>;

std::string Stored(const CFieldsOf& fields) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  fields(ar);
  ar.Close();
  return file.Bytes();
}

// Returns how many bytes are left.
std::size_t Load(const std::string& bytes, const CFieldsOf& fields, std::size_t buffer = 4096) {
  CMemFile file(bytes);
  CArchive ar(&file, CArchive::load, buffer);
  fields(ar);
  return ar.Remaining();
}

TEST(Archive, LengthsHaveThreeForms) {
  const std::pair<std::size_t, const char*> cases[] = {{0, "00"},
                                                       {254, "FE"},
                                                       {255, "FF FF00"},
                                                       {0xFFFD, "FF FDFF"},
                                                       {0xFFFE, "FF FFFF FEFF0000"},
                                                       {0xFFFF, "FF FFFF FFFF0000"},
                                                       {0x10000, "FF FFFF 00000100"}};
  for (const auto& [length, head] : cases) {
    const CString text(std::string(length, 'x'));
    const std::string bytes = Stored([&](CArchive& ar) { ar << text; });
    EXPECT_EQ(Hex(bytes.substr(0, bytes.size() - length)), Hex(Bytes(head)));
    CString back;
    EXPECT_EQ(Load(bytes, [&](CArchive& ar) { ar >> back; }), 0u);
    EXPECT_TRUE(back == text) << length;
  }
}

TEST(Archive, CountsHaveTwoForms) {
  for (const auto& [count, head] : {std::pair{0xFFFEu, "FEFF"}, std::pair{0xFFFFu, "FFFFFFFF0000"},
                                    std::pair{0x10000u, "FFFF00000100"}}) {
    const std::string bytes = Stored([count = count](CArchive& ar) { ar.WriteCount(count); });
    EXPECT_EQ(Hex(bytes), Hex(Bytes(head)));
    Load(bytes + std::string(count, '\0'),
         [count = count](CArchive& ar) { EXPECT_EQ(ar.ReadCount(1), count); });
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
  UINT number = 0x01020304;
  std::int32_t negative = -2;
  std::uint16_t word = 0x0506;
  std::uint8_t byte = 7;
  float real = 1.5f;
  CString text = "abc";
  CStringArray array;
  CStringList list;
};

void StoreAll(CArchive& ar) {
  CFields fields;
  fields.array.Add("d");
  fields.array.Add(CString(std::string(300, 'e')));
  fields.list.AddTail("f");
  fields.Serialize(ar);
}

const std::string kAll =
    Bytes("04030201 FEFFFFFF 0605 07 0000C03F 03'abc' 0200 01'd' FF2C01 'e' x300 0100 01'f'");

TEST(Archive, FieldsAreLittleEndianWithoutGaps) { EXPECT_EQ(Hex(Stored(StoreAll)), Hex(kAll)); }

TEST(Archive, AFileCutAtAnyByteIsRefused) {
  for (const std::size_t buffer : {1u, 3u, 4096u})
    for (std::size_t n = 0; n <= kAll.size(); ++n) {
      CFields fields;
      const auto load = [&] {
        Load(
            kAll.substr(0, n), [&](CArchive& ar) { fields.Serialize(ar); }, buffer);
      };
      if (n < kAll.size())
        EXPECT_THROW(load(), CArchiveException) << n;
      else
        EXPECT_NO_THROW(load());
      EXPECT_LE(fields.array.GetSize(), 2);
    }
}

TEST(Archive, ACountLargerThanTheRestIsRefused) {
  CString string;
  CStringArray strings;
  CStringList items;
  const CFieldsOf text = [&](CArchive& ar) { ar >> string; };
  const CFieldsOf array = [&](CArchive& ar) { ar.Serialize(strings); };
  const CFieldsOf list = [&](CArchive& ar) { ar.Serialize(items); };
  const CFieldsOf pairs = [](CArchive& ar) { ar.ReadCount(8); };
  const std::pair<const char*, const CFieldsOf&> cases[] = {
      {"FFFFFFFFFFFFFF00", text}, {"FFFE00", text},    {"0261", text},     {"FFFFFFFFFFFF00", array},
      {"FFFFFEFFFFFF00", list},   {"03000000", array}, {"03000000", list}, {"0100FFFFFFFFFFFFFF", pairs}};
  for (const auto& [bytes, load] : cases) EXPECT_THROW(Load(Bytes(bytes), load), CArchiveException) << bytes;
}

TEST(Archive, ListsAppendAndTheLargestCountIsNone) {
  CStringList list;
  CString after;
  list.AddTail("0");
  Load(Bytes("0100 01'a' FFFFFFFFFFFF 01'b'"), [&](CArchive& ar) {
    ar.Serialize(list);
    ar.Serialize(list);
    ar >> after;
  });
  EXPECT_EQ(list.GetCount(), 2);
  EXPECT_EQ(list.GetTail(), "a");
  EXPECT_EQ(after, "b");
}

TEST(Archive, LinesEndAtEitherLineEndAndAtTheEndOfTheFile) {
  std::string lines;
  const auto read = [&](CArchive& ar) {
    for (CString line; ar.ReadString(line);) lines += "[" + line.Std() + "]";
  };
  Load("a\r\nb\n\n\rc\r\r\n\r\nd\r", read, 2);
  EXPECT_EQ(lines, "[a][b][][\rc\r][][d\r]");
}

}  // namespace
}  // namespace vastra
