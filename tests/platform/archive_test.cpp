#include "vastra/platform/archive.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/support/files.h"

namespace vastra {
namespace {

std::string Hex(const std::string& bytes) {
  std::string digits;
  for (const char byte : bytes) {
    CString two;
    two.Format("%02X", static_cast<unsigned char>(byte));
    digits += two.Std();
  }
  return digits;
}

std::string Unhex(std::string digits) {
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  return bytes;
}

std::string Stored(const std::function<void(CArchive&)>& fields) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  fields(ar);
  ar.Close();
  return file.Bytes();
}

TEST(Archive, LengthsChangeTheirFormAtTheirBorders) {
  struct CCase {
    std::size_t length;
    const char* head;
  };
  for (const CCase& c :
       {CCase{0, "00"}, CCase{254, "FE"}, CCase{255, "FFFF00"}, CCase{0xFFFD, "FFFDFF"},
        CCase{0xFFFE, "FFFFFFFEFF0000"}, CCase{0xFFFF, "FFFFFFFFFF0000"}, CCase{0x10000, "FFFFFF00000100"}}) {
    const CString text(std::string(c.length, 'x'));
    const std::string bytes = Stored([&](CArchive& ar) { ar << text; });
    EXPECT_EQ(c.head, Hex(bytes.substr(0, bytes.size() - c.length)));
    CMemFile file(bytes);
    CArchive ar(&file, CArchive::load);
    CString back;
    ar >> back;
    EXPECT_TRUE(back == text) << c.length;
    EXPECT_EQ(0u, ar.Remaining());
  }
}

TEST(Archive, CountsChangeTheirFormAtTheirBorder) {
  struct CCase {
    UINT count;
    const char* bytes;
  };
  for (const CCase& c : {CCase{0, "0000"}, CCase{0xFFFE, "FEFF"}, CCase{0xFFFF, "FFFFFFFF0000"},
                         CCase{0x10000, "FFFF00000100"}}) {
    const std::string bytes = Stored([&](CArchive& ar) { ar.WriteCount(c.count); });
    EXPECT_EQ(c.bytes, Hex(bytes));
    CMemFile file(bytes + std::string(c.count, '\0'));
    CArchive ar(&file, CArchive::load);
    EXPECT_EQ(c.count, ar.ReadCount(1));
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

CFields Full() {
  CFields fields;
  fields.array.Add("d");
  fields.array.Add(CString(std::string(300, 'e')));
  fields.list.AddTail("f");
  return fields;
}

constexpr const char* kFull =
    "04030201FEFFFFFF0605070000C03F03616263" /* then 0200 0164, 300 times e, 0100 0166 */;

TEST(Archive, FieldsAreLittleEndianOneBehindTheOther) {
  const std::string bytes = Stored([](CArchive& ar) { Full().Serialize(ar); });
  EXPECT_EQ(std::string(kFull) + "02000164FF2C01", Hex(bytes.substr(0, 26)));
  EXPECT_EQ("01000166", Hex(bytes.substr(bytes.size() - 4)));
}

TEST(Archive, AFileCutAtAnyByteIsRefused) {
  const std::string bytes = Stored([](CArchive& ar) { Full().Serialize(ar); });
  for (const std::size_t buffer : {1u, 3u, 4096u})
    for (std::size_t n = 0; n <= bytes.size(); ++n) {
      CMemFile file(bytes.substr(0, n));
      CArchive ar(&file, CArchive::load, buffer);
      CFields fields;
      if (n < bytes.size())
        EXPECT_THROW(fields.Serialize(ar), CArchiveException) << n;
      else
        EXPECT_NO_THROW(fields.Serialize(ar));
      EXPECT_LE(fields.array.GetSize(), 2);
    }
}

TEST(Archive, ACountThatTheRestCannotHoldIsRefused) {
  struct CCase {
    const char* bytes;
    void (*load)(CArchive&);
  };
  const auto text = [](CArchive& ar) {
    CString all;
    ar >> all;
  };
  const auto array = [](CArchive& ar) {
    CStringArray all;
    ar.Serialize(all);
  };
  const auto list = [](CArchive& ar) {
    CStringList all;
    ar.Serialize(all);
  };
  const auto pairs = [](CArchive& ar) { ar.ReadCount(8); };
  for (const CCase& c :
       {CCase{"FFFFFFFFFFFFFF00", text}, CCase{"FFFE00", text}, CCase{"0261", text},
        CCase{"FFFFFFFFFFFF00", array}, CCase{"FFFFFEFFFFFF00", list}, CCase{"03000000", array},
        CCase{"03000000", list}, CCase{"0100FFFFFFFFFFFFFF", pairs}}) {
    CMemFile file(Unhex(c.bytes));
    CArchive ar(&file, CArchive::load);
    EXPECT_THROW(c.load(ar), CArchiveException) << c.bytes;
  }
}

TEST(Archive, AListAppendsAndTakesTheLargestCountForNone) {
  CMemFile file(Unhex("01000161FFFFFFFFFFFF0162"));
  CArchive ar(&file, CArchive::load);
  CStringList list;
  list.AddTail("0");
  ar.Serialize(list);
  ar.Serialize(list);
  CString behind;
  ar >> behind;
  EXPECT_EQ(2, list.GetCount());
  EXPECT_EQ("a", list.GetTail().Std());
  EXPECT_EQ("b", behind.Std());
}

TEST(Archive, LinesEndAtEitherLineEndAndAtTheEndOfTheFile) {
  CMemFile file(std::string("a\r\nb\n\n\rc\r\r\n\r\nd"));
  CArchive ar(&file, CArchive::load, 2);
  std::string lines;
  for (CString line; ar.ReadString(line);) lines += "[" + line.Std() + "]";
  EXPECT_EQ("[a][b][][\rc\r][][d]", lines);
}

TEST(Archive, ADiskThatFillsAtAnyByteIsReported) {
  const std::string bytes = Stored([](CArchive& ar) { Full().Serialize(ar); });
  const CTempDir dir;
  for (std::size_t n = 0; n < bytes.size(); ++n) {
    CFile file(dir / "full", CFile::modeWrite | CFile::modeCreate);
    CArchive ar(&file, CArchive::store, 16);
    const CFileSizeLimit full(n);
    EXPECT_THROW((Full().Serialize(ar), ar.Close()), CFileException) << n;
  }
}

}  // namespace
}  // namespace vastra
