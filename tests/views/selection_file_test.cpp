// The files of a selection: every byte, and cut at every place.
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
  ASSERT_EQ(WriteSelection(m_path, Names({"a", "", "bb"})), good);
  EXPECT_EQ(ReadBytes(m_path), kGridHead + Bytes("03000000 0161 00 026262"));
}

TEST_F(SelectionFile, AFileThatIsCutKeepsTheWholeNames) {
  // By the size from which it is read.
  const std::map<std::size_t, const char*> read = {
      {0, "no count old|"}, {8, "cut "}, {30, "cut a|"}, {53, "cut a|bb|"}, {kTrend.size(), "a|bb|"}};
  for (std::size_t size = 0; size <= kTrend.size(); ++size)
    EXPECT_EQ(ReadTrend(kTrend.substr(0, size)), std::prev(read.upper_bound(size))->second) << size;
  EXPECT_EQ(ReadTrend(kTrend + "more"), "a|bb|");
}

TEST_F(SelectionFile, ImpossibleNumbersAreRefused) {
  const struct {
    const char *bytes, *read;  // the bytes after the magic
  } kCases[] = {{"030000", "no count old|"},
                {"03000000 0161 00 0262", "cut a||"},
                {"03000000 0161 00 026262", "a||bb|"},
                {"ffffffff 0161", "no count old|"},      // a count below 0
                {"ffffff7f 0161", "cut a|"},             // a huge count
                {"01000000 ffffffffffff7f 61", "cut "},  // a name of 2 GB
                {"00000000", ""}};
  for (const auto& row : kCases) EXPECT_EQ(ReadGrid(kGridHead + Bytes(row.bytes)), row.read);
  EXPECT_EQ(ReadTrend(kTrendHead + Bytes("feffffff 0161")), "no count old|");
  EXPECT_EQ(ReadTrend(kTrendHead + Bytes("ffffff7f 0161")), "cut ");
  EXPECT_EQ(ReadTrend(kGridHead + Bytes("00000000")), "other old|");
  EXPECT_EQ(ReadGrid(kTrend), "other old|");
  CStringArray names;
  EXPECT_EQ(ReadSelection(m_dir / "none", names), cannotOpen);
  EXPECT_EQ(ReadSelection(m_dir.Path(), names), noCount) << "a directory";
}

}  // namespace
}  // namespace vastra
