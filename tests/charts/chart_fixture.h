// CChartData beside a plain model: all rows of a folder and of a ring in lists.
#pragma once

#include <cmath>
#include <condition_variable>
#include <map>
#include <random>
#include <thread>

#include "tests/history/history_fixture.h"
#include "vastra/charts/chart_data.h"
#include "vastra/charts/live_samples.h"

namespace vastra {
inline constexpr std::int64_t kUsual = 100;  // milliseconds between two rows of a log

struct CModelRow {
  CMoment moment;
  float value;
  int order;  // of rows of the same moment
};
using CModelCurve = std::vector<CModelRow>;  // in the order of time

class CChartFixture : public CHistoryFixture {
 protected:
  CChartFixture()
      : m_pData(CChartData::Make([this] {
          const std::lock_guard lock(m_mutex);
          m_changed.notify_all();
        })) {}

  template <class TCondition>
  ::testing::AssertionResult Wait(const TCondition& isTrue) {
    // By the clock: a condition that asks anew is woken by its own answers.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < end) {
      if (isTrue()) return ::testing::AssertionSuccess();
      std::unique_lock lock(m_mutex);
      m_changed.wait_for(lock, std::chrono::milliseconds(50));
    }
    return ::testing::AssertionFailure() << "nothing has come";
  }
  void Open(std::shared_ptr<const CLiveSamples> live = {}) {
    m_data.SetSources({{{Folder(), true}}, std::move(live)});
    ASSERT_TRUE(Wait([&] { return m_data.IsScanned(); }));
  }
  CChartPicture Asked(const CChartQuery& query) {
    CChartPicture picture;
    m_data.Ask(query);
    EXPECT_TRUE(Wait([&] {
      picture = m_data.Picture();
      return picture.isFinal && picture.query == query;
    }));
    return picture;
  }

  // Logs of x and y, of x alone, of z; some in subfolders, some that overlap, with pauses between them.
  void FillFolder(unsigned seed) {
    std::mt19937 random(seed);
    const std::vector<CStringArray> lists = {Names({"x", "y"}), Names({"x"}), Names({"y", "x"}),
                                             Names({"z"})};
    CMoment moment = 1'000'000;
    for (int log = 0; log < 30; ++log) {
      const CStringArray& names = lists[random() % lists.size()];
      moment += random() % 3 == 0   ? static_cast<CMoment>(random() % 3000)
                : random() % 4 == 0 ? static_cast<CMoment>(random() % 400'000)
                : random() % 6 == 0 ? -5'000
                                    : kUsual;
      std::vector<CTestRow> rows;
      for (auto count = 2 + random() % (log % 5 ? 300 : 9000); count > 0; --count, moment += kUsual) {
        CTestRow row = {moment, {}};
        for (int i = 0; i < names.GetSize(); ++i) row.values.push_back(ValueOf(random));
        rows.push_back(row);
      }
      if (random() % 5 == 0) std::swap(rows.front(), rows.back());
      Log((std::string(log % 3 ? "" : "sub/") + "log" + std::to_string(100 + log) + ".rph").c_str(), names,
          rows);
      AddToModel(names, rows, log % 3 ? log : 100 + log);
      m_edges.push_back(moment);
    }
    Sort();
  }
  static float ValueOf(std::mt19937& random) {
    const auto kind = random() % 50;
    if (kind < 2) return kind ? NAN : -INFINITY;
    return static_cast<float>(static_cast<int>(random() % 20000) - 10000) / 8;
  }
  void AddToModel(const CStringArray& names, const std::vector<CTestRow>& rows, int order = 0) {
    for (const CTestRow& row : rows)
      for (int i = 0; i < names.GetSize(); ++i)
        m_model[names[i]].push_back({row.moment, row.values[static_cast<std::size_t>(i)], order});
  }
  void Sort() {
    for (auto& [name, curve] : m_model)
      std::stable_sort(curve.begin(), curve.end(), [](const CModelRow& a, const CModelRow& b) {
        return a.moment != b.moment ? a.moment < b.moment : a.order < b.order;
      });
  }
  CModelCurve Between(const CString& name, CMoment from, CMoment to) {
    const CModelCurve& curve = m_model[name];
    const auto isBefore = [](const CModelRow& row, CMoment moment) { return row.moment < moment; };
    const auto first = std::lower_bound(curve.begin(), curve.end(), from, isBefore);
    return {first, std::lower_bound(first, curve.end(), to, isBefore)};
  }

  // The figures of rows as one step.
  static CCurveStep StepOf(const CModelCurve& rows) {
    CCurveStep step;
    for (const CModelRow& row : rows) {
      if (!std::isfinite(row.value)) {
        step.hasInvalid = true;
        continue;
      }
      if (step.values++ == 0) step.least = step.greatest = step.first = row.value;
      step.least = std::min(step.least, row.value);
      step.greatest = std::max(step.greatest, row.value);
      step.last = row.value;
    }
    return step;
  }
  static void CheckStep(const CCurveStep& step, const CModelCurve& rows) {
    const CCurveStep expected = StepOf(rows);
    ASSERT_FALSE(rows.empty());
    ASSERT_EQ(step.values, expected.values);
    ASSERT_EQ(step.hasInvalid, expected.hasInvalid);
    ASSERT_EQ(step.first, expected.first);
    ASSERT_EQ(step.last, expected.last);
    ASSERT_EQ(step.least, expected.least);
    ASSERT_EQ(step.greatest, expected.greatest);
  }

  // Each row of the range is in one step, a step is a row or within a column, and lines are broken at gaps.
  void CheckCurve(const CString& name, const CChartQuery& query, const std::vector<CCurveStep>& curve) {
    std::int64_t width = 1;
    while (2 * width <= (query.range.to - query.range.from) / query.columns) width *= 2;
    const CModelCurve inRange = Between(name, query.range.from, query.range.to);
    if (!inRange.empty()) {
      ASSERT_FALSE(curve.empty());
      ASSERT_LE(curve.front().from, inRange.front().moment);
      ASSERT_GE(curve.back().to, inRange.back().moment);
    }
    std::size_t before = 0, after = 0;
    CModelCurve earlier;
    for (std::size_t i = 0; i < curve.size(); ++i) {
      const CCurveStep& step = curve[i];
      before += step.to < query.range.from;
      after += step.from >= query.range.to;
      ASSERT_LE(step.from, step.to);
      ASSERT_EQ(step.from / width, step.to / width) << "wider than a column";
      const CModelCurve rows = Between(name, step.from, step.to + 1);
      CheckStep(step, rows);
      if (::testing::Test::HasFatalFailure()) return;
      if (i == 0) {
        earlier = rows;
        continue;
      }
      ASSERT_LT(curve[i - 1].from / width, step.from / width) << "two steps of one column";
      ASSERT_TRUE(Between(name, curve[i - 1].to + 1, step.from).empty()) << "rows are missing";
      const CMoment distance = rows.front().moment - earlier.back().moment;
      ASSERT_TRUE(distance > kUsual || step.isJoined) << distance;
      ASSERT_TRUE(distance <= 4 * kUsual + 2 * width || !step.isJoined) << distance;
      earlier = rows;
    }
    ASSERT_LE(before, 1U);
    ASSERT_LE(after, 1U);
    // A line that leaves the frame leads to a step.
    const bool isBefore = !Between(name, query.range.from - kUsual, query.range.from).empty(),
               isAfter = !Between(name, query.range.to, query.range.to + kUsual).empty();
    if (inRange.empty()) return;
    ASSERT_TRUE(!isBefore || curve.front().from < query.range.from);
    ASSERT_TRUE(!isAfter || curve.back().to >= query.range.to);
  }

  // Of any length: anywhere, near to where a log begins or ends, or as a tile.
  CMomentRange RandomRange(std::mt19937& random, const CMomentRange& all) {
    const auto length = static_cast<double>(all.to - all.from);
    const double share = std::pow(2.0, -static_cast<double>(random() % 160) / 10) * 1.5;
    const auto size = 1 + static_cast<CMoment>(length * share);
    const CMoment from = all.from - size / 2 + static_cast<CMoment>(random() % static_cast<unsigned>(length));
    const auto bits = 8 + random() % 14;
    switch (random() % 3) {
      case 0:
        return {from, from + size};
      case 1:
        return {from >> bits << bits, ((from >> bits) + 1) << bits};
      default:
        const CMoment edge = m_edges[random() % m_edges.size()] - static_cast<CMoment>(random() % 2000);
        return {edge, edge + 1 + size / 100};
    }
  }

  void CheckQueries(unsigned seed, int count) {
    std::mt19937 random(seed);
    const std::vector<std::vector<CString>> choices = {
        {"x"}, {"x", "y", "z"}, {"z", "y"}, {"none", "y", "y"}};
    for (int i = 0; i < count; ++i) {
      const CChartQuery query = {RandomRange(random, m_data.Range()),
                                 static_cast<std::uint32_t>(1 + random() % (i % 2 ? 3000 : 200)),
                                 choices[random() % choices.size()]};
      const CChartPicture picture = Asked(query);
      ASSERT_EQ(picture.curves.size(), query.variables.size());
      for (std::size_t k = 0; k < picture.curves.size(); ++k) {
        CheckCurve(query.variables[k], query, picture.curves[k]);
        ASSERT_FALSE(HasFatalFailure())
            << "query " << i << " of " << seed << ": " << query.variables[k] << " " << query.range.from << "-"
            << query.range.to << " in " << query.columns;
      }
    }
  }

  // Statistics of random ranges and values at random moments.
  void CheckFigures(unsigned seed, int count) {
    std::mt19937 random(seed);
    const std::vector<CString> variables = {"y", "none", "x", "z", "y"};
    for (int i = 0; i < count; ++i) {
      const CMomentRange range = RandomRange(random, m_data.Range());
      m_data.AskStatistics(range, variables);
      m_data.AskValues({range.from, range.to}, variables);
      ASSERT_TRUE(Wait([&] { return !m_data.Statistics().empty() && !m_data.Values().empty(); }));
      for (std::size_t k = 0; k < variables.size(); ++k) {
        CheckStatistics(m_data.Statistics()[k], Between(variables[k], range.from, range.to));
        for (const std::size_t place : {0U, 1U}) {
          const CMoment moment = place ? range.to : range.from;
          const CModelCurve near = Between(variables[k], moment - 3 * kUsual, moment + 1);
          const float expected = near.empty() ? NAN : near.back().value;
          const float value = m_data.Values()[place][k];
          EXPECT_TRUE(value == expected || (std::isnan(value) && std::isnan(expected))) << value << expected;
        }
      }
    }
  }
  static void CheckStatistics(const CCurveStatistics& found, const CModelCurve& rows) {
    const CCurveStep expected = StepOf(rows);
    double sum = 0;  // of multiples of an eighth: exact
    for (const CModelRow& row : rows) sum += std::isfinite(row.value) ? static_cast<double>(row.value) : 0;
    EXPECT_EQ(found.values, expected.values);
    EXPECT_EQ(found.least, expected.least);
    EXPECT_EQ(found.greatest, expected.greatest);
    EXPECT_EQ(found.mean, expected.values ? sum / static_cast<double>(expected.values) : 0);
  }

  // The file that an export has written; or its fault.
  std::string Exported(const CMomentRange& range, const std::vector<CString>& variables,
                       const CString& path) {
    m_data.Export({path, range, variables});
    EXPECT_TRUE(Wait([&] { return !m_data.ExportState().isRunning; }));
    const CString fault = m_data.ExportState().fault;
    return fault.IsEmpty() ? ReadBytes(path) : fault.Std();
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::map<CString, CModelCurve> m_model;
  std::vector<CMoment> m_edges;               // after rows
  const std::unique_ptr<CChartData> m_pData;  // the last but one: it ends before the others
  CChartData& m_data = *m_pData;
};

}  // namespace vastra
