#include "tests/charts/chart_fixture.h"
#include "vastra/history/folder_digest.h"

namespace vastra {
namespace {

class ChartData : public CChartFixture {};

TEST_F(ChartData, APictureShowsAllRowsOfTheLogsAndNoOther) {
  FillFolder(1);
  Open();
  CheckQueries(1, 300);
  UpdateDigests(Scanned());
  Open();
  CheckQueries(2, 300);
}

TEST_F(ChartData, FiguresAreThoseOfTheRows) {
  FillFolder(2);
  Open();
  CheckFigures(1, 200);
}

// Each variable by itself; what one log repeats are rows of their own.
TEST_F(ChartData, ARowOfSeveralOutputsCountsOnce) {
  Log("a.rph", Names({"x", "y"}), {{1000, {1, 5}}, {2000, {2, 6}}, {2000, {3, 7}}, {9000, {8, 8}}});
  Log("b.rph", Names({"x"}), {{1000, {1}}, {2000, {2}}, {2000, {3}}, {2500, {4}}});
  Log("c.rph", Names({"x", "y"}), {{9000, {8, 8}}, {9500, {9, 9}}});
  Open();
  m_data.AskStatistics({0, 9501}, {"x", "y"});
  ASSERT_TRUE(Wait([&] { return !m_data.Statistics().empty(); }));
  EXPECT_EQ(m_data.Statistics()[0].values, 6U);
  EXPECT_EQ(m_data.Statistics()[0].mean, 27.0 / 6);
  EXPECT_EQ(m_data.Statistics()[1].values, 5U);
  for (const char* name : {"d.rph", "e.rph"}) Log(name, Names({"z"}), {{3000, {1}}});
  m_data.SetSources({{{Folder(), true}}});
  m_data.AskStatistics({0, 9501}, {"z"});
  ASSERT_TRUE(Wait([&] { return !m_data.Statistics().empty(); }));
  EXPECT_EQ(m_data.Statistics()[0].values, 1U) << "logs of one row";
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

// Before very many rows are read, some of them are shown.
TEST_F(ChartData, ACoarseAnswerComesFirst) {
  constexpr int kLogs = 8, kRows = 80'000;
  for (int log = 0; log < kLogs; ++log)
    if (log != 3)
      Log(("log" + std::to_string(log) + ".rph").c_str(), Names({"x"}), Count(log * kRows, kRows));
  const CChartQuery query = {{-1'000'000, kLogs * kRows * CMoment{1000}}, 1000, {"x"}};
  CChartPicture first;
  const std::unique_ptr<CChartData> data = CChartData::Make([&] {
    const std::lock_guard lock(m_mutex);
    if (first.curves.empty() && data->Picture().query == query) first = data->Picture();
    m_changed.notify_all();
  });
  data->SetSources({{{Folder(), false}}});
  data->Ask(query);
  ASSERT_TRUE(Wait([&] { return data->Picture().isFinal && data->Picture().query == query; }));
  EXPECT_FALSE(first.isFinal);
  ASSERT_EQ(first.curves.size(), 1U);
  EXPECT_GT(first.curves[0].size(), 200U);
  int gaps = -1;
  for (const CCurveStep& step : first.curves[0]) {
    EXPECT_EQ(CMoment{1000} * static_cast<CMoment>(step.first), step.from);
    gaps += !step.isJoined;
  }
  EXPECT_EQ(gaps, 1);
  EXPECT_GT(data->Picture().curves[0].size(), 800U);
}

// It is listed once, and read as soon as that is possible.
TEST_F(ChartData, ALogThatCannotBeReadIsTriedAgain) {
  std::vector<CTestRow> both;
  for (const CTestRow& row : Count(51, 50)) both.push_back({row.moment, {row.values[0], 0}});
  Log("a.rph", Names({"x"}), Count(1, 50));
  Log("b.rph", Names({"x", "y"}), both);
  Open();
  const std::filesystem::path log = (m_dir / "b.rph").Std(), other = (m_dir / "other").Std();
  std::filesystem::rename(log, other);
  const auto rows = [&](const char* name) { return Asked({{0, 110'000}, 4000, {name}}).curves[0].size(); };
  EXPECT_EQ(rows("x"), 50U);
  EXPECT_EQ(rows("y"), 0U);
  EXPECT_EQ(m_data.Faults().size(), 1U);
  const auto figures = [&] {
    std::string text;
    for (const CCurveStatistics& one : m_data.Statistics()) text += std::to_string(one.values) + " ";
    for (const auto& values : m_data.Values()) text += std::to_string(values[0]) + " ";
    for (const CHistoryFault& fault : m_data.FigureFaults())
      text += FileName(fault.path) + ": " + fault.fault.Std();
    return text;
  };
  const std::string removed = "b.rph: was removed after it was listed";
  m_data.AskStatistics({0, 110'000}, {"x", "y"});
  EXPECT_TRUE(Wait([&] { return figures() == "50 0 " + removed; })) << figures();
  m_data.AskStatistics({0, 1}, {});
  m_data.AskValues({60'000, 20'000}, {"x"});
  EXPECT_TRUE(Wait([&] { return figures() == "nan 20.000000 " + removed; })) << figures();
  m_data.AskStatistics({0, 110'000}, {"x", "y"});
  EXPECT_TRUE(Wait([&] { return figures() == "50 0 nan 20.000000 " + removed; })) << figures();
  std::filesystem::rename(other, log);
  m_data.Rescan();
  EXPECT_TRUE(Wait([&] { return figures() == "100 50 60.000000 20.000000 "; })) << figures();
  EXPECT_TRUE(Wait([&] { return rows("x") == 100; }));
  EXPECT_TRUE(m_data.Faults().empty());
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
  m_data.Watch(true);
  Log("c.rph", Names({"x"}), Count(5, 1));
  EXPECT_TRUE(Wait([&] { return values() == "2 5 "; })) << "it does not look by itself";
}

}  // namespace
}  // namespace vastra
