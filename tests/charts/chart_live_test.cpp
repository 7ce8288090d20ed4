#include <climits>

#include "tests/charts/chart_fixture.h"
#include "tests/history/hand_over.h"

namespace vastra {
namespace {

_timeb TimeOf(CMoment moment) {
  _timeb time;
  time.time = static_cast<std::int32_t>(moment / 1000);
  time.millitm = static_cast<std::uint16_t>(moment % 1000);
  return time;
}

// Holds whoever opens the log a.rph more often than is allowed.
class CGatedLog : public CFileLayer {
 public:
  CGatedLog() : m_former(SetFileLayer(this)) {}
  ~CGatedLog() override { SetFileLayer(m_former); }

  int Open(const CString& path, int flags, mode_t mode) override {
    if (FileName(path) == "a.rph") {
      std::unique_lock lock(m_mutex);
      const int number = ++m_opened;
      m_changed.wait(lock, [&] { return number <= m_allowed; });
    }
    return CFileLayer::Open(path, flags, mode);
  }
  int Opened() {
    const std::lock_guard lock(m_mutex);
    return m_opened;
  }
  void Allow(int opened) {
    const std::lock_guard lock(m_mutex);
    m_allowed = opened;
    m_changed.notify_all();
  }

 private:
  CFileLayer* const m_former;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  int m_opened = 0, m_allowed = INT_MAX;
};

class ChartLive : public CChartFixture {
 protected:
  // Adds samples of x and y to the ring, and to the model from a moment on. The clock goes back now and then.
  void AddSamples(int count, CMoment from = kFirstMoment, bool isSteady = false) {
    for (; count > 0; --count, m_moment += kUsual) {
      const float values[] = {ValueOf(m_random), ValueOf(m_random)};
      const CMoment moment = isSteady || m_random() % 50 ? m_moment : m_moment - 7 * kUsual / 2;
      m_live->Add(TimeOf(moment), values, 2);
      if (moment >= from) AddToModel(Names({"x", "y"}), {{moment, {values[0], values[1]}}}, ++m_order);
    }
    m_edges.push_back(m_moment);
    Sort();
  }

  std::shared_ptr<CLiveSamples> m_live = std::make_shared<CLiveSamples>();
  std::mt19937 m_random{7};
  CMoment m_moment = 0;
  int m_order = 1000;
};

// From the first sample of the ring on the logs have no say in its variables; in others they have.
TEST_F(ChartLive, TheRingHoldsFromItsFirstSampleOn) {
  FillFolder(3);
  const CMomentRange logged = RangeOf(Scanned());
  m_moment = logged.from + (logged.to - logged.from) / 2 / kUsual * kUsual + 30;
  for (const char* name : {"x", "y"})
    std::erase_if(m_model[name], [&](const CModelRow& row) { return row.moment >= m_moment; });
  m_live->Begin({"x", "y"});
  const CMoment first = m_moment;
  AddSamples(5000, first);
  Open(m_live);
  CheckQueries(1, 150);
  CheckFigures(1, 100);
  // The picture goes on with the samples.
  for (int i = 0; i < 10; ++i) {
    AddSamples(100 + 400 * (i % 2), first);
    CheckQueries(2 + static_cast<unsigned>(i), 20);
  }
  CheckFigures(2, 30);
  const CModelCurve x = Between("x", first, m_moment);
  const std::string csv = Exported({first, m_moment}, {"x", "z"}, m_dir / "out.csv");
  const auto z = Between("z", first, m_moment).size();
  EXPECT_EQ(static_cast<std::size_t>(std::count(csv.begin(), csv.end(), '\n')), 1 + x.size() + z);
}

// Samples of a clock that was set back lie between others until it is as late as before.
TEST_F(ChartLive, SamplesAreInTheOrderOfTimeAfterAClockWentBack) {
  m_live->Begin({"x", "y"});
  AddSamples(3000, kFirstMoment, true);
  Open(m_live);
  CheckQueries(1, 10);
  m_moment -= 100'030;
  for (unsigned i = 0; i < 15; ++i) {
    CheckQueries(2 + i, 10);
    AddSamples(100, kFirstMoment, true);
  }
}

TEST_F(ChartLive, StatisticsCountTheSamplesThatCome) {
  m_live->Begin({"x"});
  m_data.SetSources({{}, m_live});
  m_data.AskStatistics({0, 10'000}, {"x"});
  const float value = 1;
  for (const std::uint64_t count : {1, 2}) {
    m_live->Add(TimeOf(static_cast<CMoment>(count) * 1000), &value, 1);
    m_data.Rescan();
    EXPECT_TRUE(Wait([&] { return !m_data.Statistics().empty() && m_data.Statistics()[0].values == count; }));
  }
}

TEST_F(ChartLive, FiguresThatTakeLongerThanTheNextSampleAreShown) {
  CGatedLog gate;
  Log("a.rph", Names({"x"}), Count(1, 50));
  const std::filesystem::path log = (m_dir / "a.rph").Std();  // of an hour ago: a scan does not open it again
  std::filesystem::last_write_time(log, std::filesystem::last_write_time(log) - std::chrono::hours(1));
  m_live->Begin({"x"});
  const auto add = [&](CMoment moment) {
    const float value = 1;
    m_live->Add(TimeOf(moment), &value, 1);
  };
  add(60'000);
  const std::unique_ptr<CChartData> data = CChartData::Make([] {});
  data->SetSources({{{Folder(), true}}, m_live});
  EXPECT_TRUE(Wait([&] { return data->IsScanned(); }));
  const int before = gate.Opened();
  gate.Allow(before);
  data->AskStatistics({0, 100'000}, {"x"});
  EXPECT_TRUE(Wait([&] { return gate.Opened() > before; }));
  add(61'000);
  Log("seen.rph", Names({"seen"}), {{0, {1}}});
  data->Rescan();
  EXPECT_TRUE(Wait([&] { return data->Variables().size() == 2; }));
  gate.Allow(before + 1);
  EXPECT_TRUE(Wait([&] { return !data->Statistics().empty(); })) << "the sample has ended the reading";
  gate.Allow(INT_MAX);
  add(62'000);
  data->Rescan();
  EXPECT_TRUE(Wait([&] {
    const auto statistics = data->Statistics();
    return !statistics.empty() && statistics[0].values == 53;
  }));
}

// A cursor can be after the newest row.
TEST_F(ChartLive, ValuesFollowTheSamplesThatCome) {
  m_live->Begin({"x"});
  m_data.SetSources({{}, m_live});
  m_data.AskValues({1000, 9000}, {"x"});
  for (int i = 1; i < 9; ++i) {
    const auto value = static_cast<float>(i);
    m_live->Add(TimeOf(CMoment{1000} * i), &value, 1);
    m_data.Rescan();
    const float expected = i < 6 ? NAN : value;  // the distance of three rows is not a gap
    EXPECT_TRUE(Wait([&] {
      const auto values = m_data.Values();
      return values.size() == 2 && values[0][0] == 1 &&
             (values[1][0] == expected || (std::isnan(values[1][0]) && std::isnan(expected)));
    })) << i;
  }
}

// The picture was elsewhere while samples went from the ring to the journal.
TEST_F(ChartLive, SamplesThatTheRingHasDroppedMeanwhileAreReadFromLogs) {
  const auto live = std::make_shared<CLiveSamples>(std::size_t{64} * 64 * 12);  // 4096 samples
  live->Begin({"x"});
  CHandOver logger(Folder());
  const auto add = [&](int count) {
    for (int i = logger.Kept(); i < logger.Kept() + count; ++i)
      if (const auto value = static_cast<float>(i); true) live->Add(TimeOf(CMoment{1000} * i), &value, 1);
    logger.Keep(count);
  };
  const CChartQuery query = {{0, 1'000'000}, 7000, {"x"}};
  add(600);
  Open(live);
  EXPECT_EQ(Asked(query).curves[0].size(), 600U);
  Asked({{-9000, -8000}, 100, {"x"}});
  add(1000);
  Log("seen.rph", Names({"seen"}), {{-9'000'000, {1}}, {-8'000'000, {1}}});
  m_data.Rescan();
  ASSERT_TRUE(Wait([&] { return m_data.Variables().size() == 2; }));
  add(6000);
  EXPECT_EQ(Asked(query).curves[0].size(), 1001U);
}

// Of a feed: samples are missing in the ring, and the journal has them.
TEST_F(ChartLive, LogsHoldAsFarAsTheyReachIfTheRingIsThinned) {
  CHandOver logger(Folder());
  const auto rows = [&] { return Asked({{0, 100'000}, 1000, {"x"}}).curves[0].size(); };
  m_live->Begin({"x"});
  const struct {
    int kept;
    std::vector<int> live;
    std::size_t rows;
  } kSteps[] = {{50, {20, 30, 40, 49, 50, 53}, 52}, {10, {59, 62}, 61}};
  m_data.SetSources({{{Folder(), false}}, m_live, true});
  for (const auto& step : kSteps) {
    logger.Keep(step.kept);
    for (const int i : step.live)
      if (const auto value = static_cast<float>(i); true) m_live->Add(TimeOf(CMoment{1000} * i), &value, 1);
    m_data.Rescan();
    EXPECT_TRUE(Wait([&] { return rows() == step.rows; })) << rows() << " " << step.rows;
  }
}

// A logger adds samples to a ring that drops the oldest ones, to its journal a bit later, and saves its logs.
TEST_F(ChartLive, NoRowIsMissingOrDoubleWhileTheRingDropsSamples) {
  constexpr int kCount = 6000, kLate = 10, kInLog = 500;
  const auto live = std::make_shared<CLiveSamples>(std::size_t{64} * 16 * 12);  // 1024 samples
  live->Begin({"x"});
  std::atomic<int> added = 0;
  std::thread thread([&] {
    CHandOver logger(Folder());
    while (added < kCount) {
      const auto value = static_cast<float>(added);
      live->Add(TimeOf(CMoment{1000} * added), &value, 1);
      if (++added % kLate) continue;
      logger.Keep(kLate);
      if (added % kInLog == 0) logger.Save();
      if (added % kInLog == 0) logger.End();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  Open(live);
  for (int pictures = 0, least = 0; least < kCount; ++pictures) {
    least = added;
    const CChartPicture picture = Asked({{-1000, kCount * 1000}, pictures % 2 ? 7000U : 200U, {"x"}});
    float next = 0;
    for (const CCurveStep& step : picture.curves[0]) {
      if (step.least != next || step.greatest != next + static_cast<float>(step.values - 1)) {
        ADD_FAILURE() << "after " << next << " comes " << step.least << " to " << step.greatest << " of "
                      << step.values << ", picture " << pictures;
        least = kCount;
        break;
      }
      next = step.greatest + 1;
    }
    EXPECT_GE(next, static_cast<float>(pictures ? least : 0));
  }
  thread.join();
}

}  // namespace
}  // namespace vastra
