// The files of a selection: every byte, cut at every place, and on a full disk.
#include "vastra/views/selection_file.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/logfiles/example.h"
#include "tests/support/files.h"
#include "tests/support/hex.h"
#include "tests/support/names.h"

namespace vastra {
namespace {

using enum ESelectionFile;

const std::string kTrend = ExampleBytes("## Selections", "## The configuration file");
const std::string kTrendHead = kTrend.substr(0, 4), kGridHead = Bytes("583d420d");
const std::string kGrid = kGridHead + Bytes("03000000 0161 00 026262");
const CTrendSelection kTwoCurves = {{{"a", -10, 0.5, 0x5A5AFA}, {"bb", 0, 1000, 0xA00000}}, 1};

class SelectionFile : public testing::Test {
 protected:
  // The result and the names after reading bytes into a selection of the name "old".
  std::string ReadTrend(const std::string& bytes) {
    CTrendSelection selection = {{{"old", 1, 2, 3}}, 0};
    WriteBytes(m_path, bytes);
    std::string all = kResults.at(ReadSelection(m_path, selection));
    for (const CCurveRecord& curve : selection.curves) all += curve.name.Std() + "|";
    return all;
  }
  std::string ReadGrid(const std::string& bytes) {
    CStringArray names = Names({"old"});
    WriteBytes(m_path, bytes);
    std::string all = kResults.at(ReadSelection(m_path, names));
    for (const CString& name : names) all += name.Std() + "|";
    return all;
  }

  const std::map<ESelectionFile, const char*> kResults = {
      {good, ""}, {noCount, "no count "}, {endsInside, "cut "}, {otherKind, "other "}};
  CTempDir m_dir;
  const CString m_path = m_dir / "x";
};

TEST_F(SelectionFile, EveryByteHasItsPlace) {
  ASSERT_EQ(WriteSelection(m_path, kTwoCurves), good);
  EXPECT_EQ(ReadBytes(m_path), kTrend);
  CTrendSelection selection;
  ASSERT_EQ(ReadSelection(m_path, selection), good);
  EXPECT_EQ(selection.curves, kTwoCurves.curves);
  EXPECT_EQ(selection.scaleIndex, 1U);

  const std::string name(300, 'n');
  ASSERT_EQ(WriteSelection(m_path, Names({name.c_str()})), good);
  EXPECT_EQ(ReadBytes(m_path), kGridHead + Bytes("01000000 ff2c01") + name);
  ASSERT_EQ(WriteSelection(m_path, Names({"a", "", "bb"})), good);
  EXPECT_EQ(ReadBytes(m_path), kGrid);
}

TEST_F(SelectionFile, AFileThatIsCutKeepsTheWholeNames) {
  using CNames = std::map<std::size_t, const char*>;  // by the size from which they are read
  const CNames trend = {{0, "no count old|"}, {8, "cut "}, {30, "cut a|"}, {53, "cut a|bb|"}};
  const CNames grid = {{0, "no count old|"}, {8, "cut "}, {10, "cut a|"}, {11, "cut a||"}};
  for (std::size_t cut = 0; cut < kTrend.size(); ++cut)
    EXPECT_EQ(ReadTrend(kTrend.substr(0, cut)), std::prev(trend.upper_bound(cut))->second) << cut;
  for (std::size_t cut = 0; cut < kGrid.size(); ++cut)
    EXPECT_EQ(ReadGrid(kGrid.substr(0, cut)), std::prev(grid.upper_bound(cut))->second) << cut;
  EXPECT_EQ(ReadTrend(kTrend + "more"), "a|bb|");
}

TEST_F(SelectionFile, ImpossibleNumbersAreRefused) {
  const struct {
    const char *bytes, *read;  // the bytes after the magic
  } kCases[] = {
      {"ffffffff 0161", "no count old|"},      // a count below 0
      {"00000080 0161", "no count old|"},      // the lowest
      {"ffffff7f 0161", "cut a|"},             // a huge count
      {"01000000 ffffffffffff7f 61", "cut "},  // a name of 2 GB
      {"00000000", ""},
  };
  for (const auto& row : kCases) EXPECT_EQ(ReadGrid(kGridHead + Bytes(row.bytes)), row.read);
  EXPECT_EQ(ReadTrend(kTrendHead + Bytes("feffffff 0161")), "no count old|");
  EXPECT_EQ(ReadTrend(kTrendHead + Bytes("ffffff7f 0161")), "cut ");
  EXPECT_EQ(ReadTrend(kGrid), "other old|");
  EXPECT_EQ(ReadGrid(kTrend), "other old|");
  CStringArray names;
  EXPECT_EQ(ReadSelection(m_dir / "none", names), cannotOpen);
  EXPECT_EQ(ReadSelection(m_dir.Path(), names), noCount) << "a directory";
}

TEST_F(SelectionFile, AFailedSaveKeepsTheFormerFile) {
  WriteBytes(m_path, "former");
  for (std::size_t size = 0; size < kTrend.size(); ++size) {
    const CFileSizeLimit limit(size);
    EXPECT_EQ(WriteSelection(m_path, kTwoCurves), cannotWrite);
    EXPECT_EQ(ReadBytes(m_path), "former");
  }
  EXPECT_EQ(WriteSelection(m_dir / "none/x", CStringArray()), cannotCreate);
}

}  // namespace
}  // namespace vastra
