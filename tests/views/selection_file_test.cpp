// The files of a selection, byte by byte, cut everywhere, and on a full disk.
#include <gtest/gtest.h>

#include <map>

#include "tests/logfiles/example.h"
#include "tests/support/files.h"
#include "tests/support/hex.h"
#include "tests/support/names.h"
#include "vastra/views/selection_file.h"

namespace vastra {
namespace {

using enum ESelectionFile;

const std::string kTrend = ExampleBytes("## Selections", "## The configuration file");
const std::string kTrendHead = kTrend.substr(0, 4), kGridHead = Bytes("583d420d");
const std::string kGrid = kGridHead + Bytes("03000000 0161 00 026262");

CTrendSelection TwoCurves() { return {{{"a", -10, 0.5, 0x5A5AFA}, {"bb", 0, 1000, 0xA00000}}, 1}; }

std::string Names(const CStringArray& names) {
  std::string all;
  for (const CString& name : names) all += name.Std() + "|";
  return all;
}
std::string Names(const CTrendSelection& selection) {
  std::string all;
  for (const CCurveRecord& curve : selection.curves) all += curve.name.Std() + "|";
  return all;
}

class SelectionFile : public testing::Test {
 protected:
  // The names after reading bytes into a selection of the name "old".
  std::string ReadTrend(const std::string& bytes, ESelectionFile result) {
    CTrendSelection selection = {{{"old", 1, 2, 3}}, 0};
    WriteBytes(m_path, bytes);
    EXPECT_EQ(result, ReadSelection(m_path, selection)) << bytes.size();
    return Names(selection);
  }
  std::string ReadGrid(const std::string& bytes, ESelectionFile result) {
    CStringArray names = vastra::Names({"old"});
    WriteBytes(m_path, bytes);
    EXPECT_EQ(result, ReadSelection(m_path, names)) << bytes.size();
    return Names(names);
  }

  CTempDir m_dir;
  const CString m_path = m_dir / "x";
};

TEST_F(SelectionFile, EveryByteHasItsPlace) {
  ASSERT_EQ(good, WriteSelection(m_path, TwoCurves()));
  EXPECT_EQ(kTrend, ReadBytes(m_path));
  CTrendSelection selection;
  ASSERT_EQ(good, ReadSelection(m_path, selection));
  EXPECT_EQ(TwoCurves().curves, selection.curves);
  EXPECT_EQ(1U, selection.scaleIndex);

  const CString name(std::string(300, 'n'));
  CStringArray names;
  names.Add(name);
  ASSERT_EQ(good, WriteSelection(m_path, names));
  EXPECT_EQ(kGridHead + Bytes("01000000 ff2c01") + name.Std(), ReadBytes(m_path));
  EXPECT_EQ(kGrid, (WriteSelection(m_path, vastra::Names({"a", "", "bb"})), ReadBytes(m_path)));
}

TEST_F(SelectionFile, AFileCutAnywhereGivesTheWholeNamesAheadOfTheCut) {
  const auto after = [](std::size_t cut, std::map<std::size_t, const char*> names) {
    return std::string(std::prev(names.upper_bound(cut))->second);  // by where they begin to be whole
  };
  for (std::size_t cut = 0; cut < kTrend.size(); ++cut)
    EXPECT_EQ(after(cut, {{0, "old|"}, {8, ""}, {30, "a|"}, {53, "a|bb|"}}),
              ReadTrend(kTrend.substr(0, cut), cut < 8 ? noCount : endsInside));
  for (std::size_t cut = 0; cut < kGrid.size(); ++cut)
    EXPECT_EQ(after(cut, {{0, "old|"}, {8, ""}, {10, "a|"}, {11, "a||"}}),
              ReadGrid(kGrid.substr(0, cut), cut < 8 ? noCount : endsInside));
  EXPECT_EQ("a|bb|", ReadTrend(kTrend + "more", good));
}

TEST_F(SelectionFile, NumbersThatCannotBeAreNotFollowed) {
  const struct {
    const char* bytes;  // behind the magic
    ESelectionFile result;
    const char* names;
  } kCases[] = {
      {"ffffffff 0161", noCount, "old|"},              // a count below 0
      {"00000080 0161", noCount, "old|"},              // the lowest
      {"ffffff7f 0161", endsInside, "a|"},             // a huge one
      {"01000000 ffffffffffff7f 61", endsInside, ""},  // a name of 2 GB
      {"00000000", good, ""},
  };
  for (const auto& row : kCases) EXPECT_EQ(row.names, ReadGrid(kGridHead + Bytes(row.bytes), row.result));
  EXPECT_EQ("old|", ReadTrend(kTrendHead + Bytes("feffffff 0161"), noCount));
  EXPECT_EQ("", ReadTrend(kTrendHead + Bytes("ffffff7f 0161"), endsInside));
  EXPECT_EQ("old|", ReadTrend(kGrid, otherKind));
  EXPECT_EQ("old|", ReadGrid(kTrend, otherKind));
  CStringArray names;
  EXPECT_EQ(cannotOpen, ReadSelection(m_dir / "none", names));
  EXPECT_EQ(noCount, ReadSelection(m_dir.Path(), names)) << "a directory";
}

TEST_F(SelectionFile, AFailedSaveLosesNothing) {
  WriteBytes(m_path, "former");
  for (std::size_t size = 0; size < kTrend.size(); ++size) {
    const CFileSizeLimit limit(size);
    EXPECT_EQ(cannotWrite, WriteSelection(m_path, TwoCurves()));
    EXPECT_EQ("former", ReadBytes(m_path));
  }
  EXPECT_EQ(cannotCreate, WriteSelection(m_dir / "none/x", CStringArray()));
  EXPECT_EQ(good, WriteSelection(m_path, TwoCurves()));
  EXPECT_EQ(kTrend, ReadBytes(m_path));
}

}  // namespace
}  // namespace vastra
