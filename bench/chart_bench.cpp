// A chart of 16 curves of a million rows each, 1200 x 600: zoom and pan from the query of the logs to the
// pixels, compared with a redraw of the same curves by QCustomPlot, which has them in memory, with its
// fastest settings. And a year of rows opened whole with a digest, compared with reading the bytes of its
// logs.
#include <qcustomplot.h>

#include <cmath>
#include <condition_variable>
#include <mutex>

#include "bench/history_logs.h"
#include "bench/ratios.h"
#include "vastra/charts/chart_colour_rules.h"
#include "vastra/charts/chart_data.h"
#include "vastra/charts/chart_painter.h"
#include "vastra/history/catalogue.h"
#include "vastra/history/folder_digest.h"

namespace vastra::bench {
namespace {

constexpr int kWidth = 1200, kHeight = 600;
constexpr CMoment kStart = CMoment{1'700'000'000} * 1000;
constexpr double kLow = -40, kHigh = 40;

// Logs of curves with a row each second.
class CCurveFolder {
 public:
  CCurveFolder(int curves, int logs, int rows) : m_curves(curves) {
    CStringArray names;
    for (int i = 0; i < curves; ++i) names.Add(Name(i));
    CLogWriter writer;
    writer.SetNames(names);
    CSampleStore store;
    for (int log = 0; log < logs; ++log) {
      store.RemoveAll();
      for (int i = 0; i < rows; ++i) Append(store);
      char name[32];
      std::snprintf(name, sizeof name, "%06d.rph", log);
      CFile file(m_folder.File(name).c_str(), CFile::modeCreate | CFile::modeWrite);
      writer.Write(file, store);
    }
  }

  static CString Name(int curve) { return ("Curve" + std::to_string(curve)).c_str(); }
  static float Value(int curve, int row) {
    const unsigned noise = static_cast<unsigned>(curve * 7919 + row * 104'729) * 2'654'435'761U >> 16;
    return 4.0F * static_cast<float>(curve - 8) +
           3.0F * std::sin(static_cast<float>(row) * 2e-5F * static_cast<float>(curve + 1)) +
           static_cast<float>(noise) * 3e-5F;
  }
  CString Path() const { return m_folder.Path().c_str(); }
  CMomentRange Range() const { return {kStart, kStart + CMoment{m_rows} * 1000}; }
  int Rows() const { return m_rows; }
  int Curves() const { return m_curves; }

 private:
  void Append(CSampleStore& store) {
    std::vector<float> values;
    for (int i = 0; i < m_curves; ++i) values.push_back(Value(i, m_rows));
    _timeb time;
    time.time = static_cast<std::int32_t>(kStart / 1000 + m_rows++);
    time.millitm = 0;
    store.Append(time, reinterpret_cast<const char*>(values.data()), static_cast<std::uint32_t>(m_curves));
  }

  CMemoryFolder m_folder;
  int m_curves, m_rows = 0;
};

CCurveFolder& Million() {
  static CCurveFolder folder(16, 250, 4000);
  return folder;
}
CCurveFolder& Year() {
  static CCurveFolder folder(4, 365 * 24, 3600);
  return folder;
}

// Where a user looks: into the curves to a hundredth, along them, and out again.
std::vector<CMomentRange> Zoomed(const CMomentRange& all) {
  constexpr int kSteps = 100;
  constexpr double kFactor = 0.955, kPlace = 0.37;
  std::vector<CMomentRange> ranges;
  const auto from = static_cast<double>(all.from), length = static_cast<double>(all.to - all.from);
  for (int i = 0; i < 2 * kSteps; ++i) {
    const double part = std::pow(kFactor, std::min(i, 2 * kSteps - 1 - i));
    const double first = from + length * kPlace * (1 - part);
    ranges.push_back({static_cast<CMoment>(first), static_cast<CMoment>(first + length * part)});
  }
  return ranges;
}
std::vector<CMomentRange> Panned(const CMomentRange& all) {
  constexpr int kSteps = 200;
  std::vector<CMomentRange> ranges;
  const CMoment length = (all.to - all.from) / 4;
  for (int i = 0; i < kSteps; ++i) {
    const CMoment first = all.from + 3 * length * i / kSteps;
    ranges.push_back({first, first + length});
  }
  return ranges;
}

// A chart of a folder, drawn into an image.
class CChart {
 public:
  explicit CChart(const CCurveFolder& folder)
      : m_image(kWidth, kHeight, QImage::Format_RGB32), m_pData(CChartData::Make([this] {
          const std::lock_guard lock(m_mutex);
          m_changed = true;
          m_wake.notify_one();
        })) {
    CChartLayout layout;
    layout.axes = {{1, false, {kLow, kHigh}}};
    for (int i = 0; i < folder.Curves(); ++i) {
      m_variables.push_back(CCurveFolder::Name(i));
      layout.curves.push_back({m_variables.back(), 1, static_cast<unsigned>(i)});
    }
    m_state.SetLayout(layout);
    m_pData->SetSources({{{folder.Path(), false}}});
    Wait([this] { return m_pData->IsScanned(); });
  }

  CChartPicture Ask(const CMomentRange& range) {
    const CChartQuery query = {range, kWidth, m_variables};
    m_pData->Ask(query);
    CChartPicture picture;
    Wait([&] {
      picture = m_pData->Picture();
      return picture.isFinal && picture.query == query;
    });
    return picture;
  }
  void Draw(const CMomentRange& range) {
    m_state.Show(range, CChartState::moveWheel);
    m_state.SetPicture(Ask(range));
    m_painter.LayOut(m_state, m_image.size(), QApplication::font(), QApplication::palette());
    const CChartCanvas canvas = {
        {reinterpret_cast<std::uint32_t*>(m_image.bits()), m_image.bytesPerLine() / 4},
        {0, 0, kWidth, kHeight}};
    QPainter painter(&m_image);
    m_painter.PaintPlot(painter, m_state, &canvas);
  }
  const QImage& Image() const { return m_image; }

 private:
  // Looks only after a change, as a window does.
  template <class TCondition>
  void Wait(const TCondition& isTrue) {
    do {
      std::unique_lock lock(m_mutex);
      m_wake.wait(lock, [this] { return m_changed; });
      m_changed = false;
    } while (!isTrue());
  }

  std::mutex m_mutex;
  std::condition_variable m_wake;
  bool m_changed = false;
  std::vector<CString> m_variables;
  QImage m_image;
  CChartState m_state;
  CChartPainter m_painter;
  const std::unique_ptr<CChartData> m_pData;  // ends before the others
};

class CPeer {
 public:
  explicit CPeer(const CCurveFolder& folder) : m_image(kWidth, kHeight, QImage::Format_RGB32) {
    m_plot.setAttribute(Qt::WA_DontShowOnScreen);
    m_plot.yAxis->setRange(kLow, kHigh);
    QVector<double> keys(folder.Rows()), values(folder.Rows());
    for (int row = 0; row < folder.Rows(); ++row) keys[row] = static_cast<double>(kStart) / 1000 + row;
    for (int curve = 0; curve < folder.Curves(); ++curve) {
      for (int row = 0; row < folder.Rows(); ++row)
        values[row] = static_cast<double>(CCurveFolder::Value(curve, row));
      QCPGraph* graph = m_plot.addGraph();
      graph->setPen(QPen(QColor::fromRgb(CurveColour(static_cast<unsigned>(curve), false)), 1));
      graph->setData(keys, values, true);
    }
    m_plot.resize(kWidth, kHeight);
    m_plot.show();
  }

  // By toPainter, which is faster than replot.
  void Draw(const CMomentRange& range) {
    m_plot.xAxis->setRange(static_cast<double>(range.from) / 1000, static_cast<double>(range.to) / 1000);
    m_image.fill(Qt::white);
    QCPPainter painter(&m_image);
    m_plot.toPainter(&painter, kWidth, kHeight);
  }
  const QImage& Image() const { return m_image; }

 private:
  QImage m_image;
  QCustomPlot m_plot;
};

using CRanges = std::vector<CMomentRange> (*)(const CMomentRange&);

// The part of the picture under the curves, which alone have strong colours.
double Coloured(const QImage& image) {
  int count = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) count += QColor(image.pixel(x, y)).saturation() > 64;
  return count;
}

void RequireSame(const CMomentRange& range) {
  CChart chart(Million());
  CPeer peer(Million());
  chart.Draw(range);
  peer.Draw(range);
  const double ratio = Coloured(chart.Image()) / Coloured(peer.Image());
  Require(std::abs(ratio - 1) < 0.25, "not the same curves: " + std::to_string(ratio));
}

// Nothing of the curves is in memory at the first redraw: each has to come from the logs.
void Redrawn(benchmark::State& state, CRanges ranges) {
  const std::vector<CMomentRange> steps = ranges(Million().Range());
  RequireSame(steps.front());
  RequireSame(steps[steps.size() / 2]);
  std::unique_ptr<CChart> chart;
  Repeat(
      state,
      [&] {
        for (const CMomentRange& range : steps) chart->Draw(range);
      },
      [&] { chart = std::make_unique<CChart>(Million()); });
}

void PlotRedrawn(benchmark::State& state, CRanges ranges) {
  CPeer peer(Million());
  const std::vector<CMomentRange> steps = ranges(Million().Range());
  Repeat(state, [&] {
    for (const CMomentRange& range : steps) peer.Draw(range);
  });
}

// From the path to the picture, by the clock: several threads work at it.
void YearOpened(benchmark::State& state) {
  static const bool hasDigest = [] {
    CCatalogue catalogue;
    catalogue.Add(Year().Path(), false);
    catalogue.Scan();
    return UpdateDigests(catalogue.Logs()).empty();
  }();
  Require(hasDigest, "no digest");
  for (auto _ : state) {
    CChart chart(Year());
    const CChartPicture picture = chart.Ask(Year().Range());
    std::uint64_t rows = 0;
    for (const CCurveStep& step : picture.curves[3]) rows += step.values;
    Require(rows == static_cast<std::uint64_t>(Year().Rows()), "rows are missing");
  }
}

void YearRead(benchmark::State& state) {
  std::vector<char> bytes(1 << 20);
  for (auto _ : state)
    for (const auto& entry : std::filesystem::directory_iterator(Year().Path().Std())) {
      if (entry.path().extension() != ".rph") continue;
      const int file = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
      while (::read(file, bytes.data(), bytes.size()) > 0) continue;
      ::close(file);
    }
}

BENCHMARK_CAPTURE(Redrawn, zoom, Zoomed)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PlotRedrawn, zoom, Zoomed)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Redrawn, pan, Panned)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PlotRedrawn, pan, Panned)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(YearOpened)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(YearRead)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  return vastra::bench::RunWithGoals(argc, argv,
                                     {{"zoom over 16 curves of 1,000,000 rows : QCustomPlot",
                                       {"Redrawn/zoom/manual_time"},
                                       {"PlotRedrawn/zoom/manual_time"},
                                       10,
                                       true},
                                      {"pan over them : QCustomPlot",
                                       {"Redrawn/pan/manual_time"},
                                       {"PlotRedrawn/pan/manual_time"},
                                       10,
                                       true},
                                      {"a year opened whole, with a digest : reading its bytes",
                                       {"YearOpened/real_time"},
                                       {"YearRead/real_time"},
                                       1,
                                       false}});
}
