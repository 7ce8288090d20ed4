#include "tests/charts/chart_fixture.h"

namespace vastra {
namespace {

_timeb TimeOf(CMoment moment) {
  _timeb time;
  time.time = static_cast<std::int32_t>(moment / 1000);
  time.millitm = static_cast<std::uint16_t>(moment % 1000);
  return time;
}

class ChartLive : public CChartFixture {
 protected:
  // Adds samples of x and y to the ring, and to the model from a moment on.
  void AddSamples(int count, CMoment from = kFirstMoment) {
    for (; count > 0; --count, m_moment += kUsual) {
      const float values[] = {ValueOf(m_random), ValueOf(m_random)};
      const CMoment moment =
          m_random() % 50 ? m_moment : m_moment - 7 * kUsual / 2;  // a clock that went back
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

// Of a feed: samples are missing in the ring, and the logs have them.
TEST_F(ChartLive, LogsHoldAsFarAsTheyReachIfTheRingIsThinned) {
  Log("a.rph", Names({"x"}), Count(0, 50));
  m_live->Begin({"x"});
  for (const int i : {20, 30, 40, 49, 50, 53, 54})
    if (const float value = static_cast<float>(i); true) m_live->Add(TimeOf(i * 1000), &value, 1);
  m_data.SetSources({{{Folder(), false}}, m_live, true});
  ASSERT_TRUE(Wait([&] { return m_data.IsScanned(); }));
  const CChartPicture picture = Asked({{0, 100'000}, 1000, {"x"}});
  EXPECT_EQ(picture.curves[0].size(), 53U);
}

// A logger adds samples to a ring that drops the oldest ones, and saves its log now and then.
TEST_F(ChartLive, NoRowIsMissingOrDoubleWhileTheRingDropsSamples) {
  constexpr int kCount = 6000, kInLog = 50;
  const auto live = std::make_shared<CLiveSamples>(std::size_t{64} * 16 * 12);  // 1024 samples
  live->Begin({"x"});
  std::atomic<int> added = 0;
  std::thread logger([&] {
    std::vector<CTestRow> rows;
    for (int i = 0; i < kCount; ++i) {
      const auto value = static_cast<float>(i);
      rows.push_back({i * 10, {value}});
      live->Add(TimeOf(i * 10), &value, 1);
      if (i % kInLog == 0) {
        WriteBytes(m_dir / "new", Written(Names({"x"}), StoreOf(rows)));
        std::filesystem::rename((m_dir / "new").Std(), (m_dir / "a.rph").Std());
      }
      added = i + 1;
      if (i % 10 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  Open(live);
  for (int pictures = 0, least = 0; least < kCount; ++pictures) {
    least = added;
    const CChartPicture picture = Asked({{-1000, kCount * 10}, pictures % 2 ? 7000U : 200U, {"x"}});
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
  logger.join();
}

}  // namespace
}  // namespace vastra
