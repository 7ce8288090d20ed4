#include "tests/charts/chart_fixture.h"
#include "vastra/history/folder_digest.h"

namespace vastra {
namespace {

class ChartData : public CChartFixture {};

TEST_F(ChartData, APictureShowsAllRowsOfTheLogsAndNoOther) {
  FillFolder(1);
  Open();
  CheckQueries(1, 40);
  UpdateDigests(Scanned());
  Open();
  CheckQueries(2, 40);
}

TEST_F(ChartData, FiguresAreThoseOfTheRows) {
  FillFolder(2);
  Open();
  CheckFigures(1, 60);
}

TEST_F(ChartData, AnExportAppearsWholeOrNotAtAll) {
  Log("a.rph", Names({"x", "time"}), {{1000, {1, 2}}, {2000, {NAN, 4}}, {3000, {5, 6}}});
  Log("b.rph", Names({"y"}), {{2000, {7}}});
  Open();
  const CString csv = m_dir / "out.csv";
  EXPECT_EQ(Exported({1000, 3000}, {"y", "x", "time", "y"}, csv),
            "time,y,x,time_2\n1970-01-01 00:00:01.000,,1,2\n1970-01-01 00:00:02.000,,nan,4\n"
            "1970-01-01 00:00:02.000,7,,\n");
  EXPECT_EQ(Files(), " a.rph b.rph out.csv");
  // What cannot be written changes nothing.
  const std::string log = ReadBytes(m_dir / "b.rph");
  EXPECT_EQ(Exported({0, 9000}, {"x"}, m_dir / "b.rph"),
            (m_dir / "b.rph").Std() + ": not written: it is one of the logs");
  EXPECT_EQ(ReadBytes(m_dir / "b.rph"), log);
  EXPECT_EQ(Exported({0, 9000}, {"x"}, m_dir / "none/out.csv"),
            (m_dir / "none/out.csv").Std() + ": No such file or directory");
  std::filesystem::remove((m_dir / "a.rph").Std());
  EXPECT_EQ(Exported({0, 9000}, {"x"}, csv).find(csv.Std() + ": not written: " + (m_dir / "a.rph").Std()),
            0U);
  EXPECT_EQ(ReadBytes(csv).substr(0, 9), "time,y,x,");
}

// A log that comes, and one that goes.
TEST_F(ChartData, ARescanReadsWhatHasChangedAlone) {
  const CChartQuery query = {{0, 100'000}, 1000, {"x"}};
  const auto values = [&] {
    std::string text;
    const CChartPicture picture = Asked(query);
    for (const CCurveStep& step : picture.curves[0]) text += std::to_string(int(step.first)) + " ";
    return text;
  };
  Log("a.rph", Names({"x"}), Count(1, 3));
  Open();
  EXPECT_EQ(values(), "1 2 3 ");
  struct {
    const char* file;
    int first, count;
    const char* expected;
  } const kChanges[] = {{"b.rph", 4, 2, "1 2 3 4 5 "}, {"a.rph", 2, 1, "2 4 5 "}, {"b.rph", 9, 0, "2 "}};
  for (const auto& change : kChanges) {
    if (change.count)
      Log(change.file, Names({"x"}), Count(change.first, change.count));
    else
      DeleteFile(m_dir / change.file);
    m_data.Rescan();
    EXPECT_TRUE(Wait([&] { return values() == change.expected; })) << values();
  }
}

}  // namespace
}  // namespace vastra
