// Redraw of a trend: 20 curves of 100 points, 800 x 600, into an image in memory, compared with the same
// curves by QCustomPlot with its fastest settings: bare axes, no antialiasing, fast lines.
#include <qcustomplot.h>

#include <cmath>

#include "bench/ratios.h"
#include "vastra/ui/window.h"
#include "vastra/views/simple_color.h"
#include "vastra/views/trend_parts.h"

namespace vastra::bench {
namespace {

constexpr int kCurves = 20;
constexpr CSize kSize = {800, 600};
constexpr double kMinimum = -1.5, kMaximum = 1.5;

float ValueOf(int curve, int point) {
  const unsigned noise = static_cast<unsigned>(curve * 7919 + point * 104729) % 1000;
  return std::sin(static_cast<float>(point) * 0.1F + static_cast<float>(curve)) +
         static_cast<float>(noise) * 2e-4F;
}

class CWindow : public CWnd {
 public:
  CWindow() { CreateTopLevel("", CRect::Of({0, 0}, kSize), nullptr, plain); }
};

struct CTrend {
  CTrend() {
    UINT position = CSimpleColor::GetFirstPosition();
    for (int curve = 0; curve < kCurves; ++curve) {
      auto* variable = new CVariable;
      variables.Add(variable);
      variable->m_color = CSimpleColor::GetNextColor(position);
      variable->SetScale({kMinimum, kMaximum});
      for (int point = kTrendPoints - 1; point >= 0; --point) variable->AddPoint(ValueOf(curve, point));
    }
    picture.CreateCompatibleBitmap(window, kSize);
  }
  ~CTrend() {
    for (const CVariable* variable : variables) delete variable;
  }
  void Draw() {
    CDC dc(picture);
    DrawCurves(dc, variables, kSize);
  }

  CVariableArray variables;
  CWindow window;
  CBitmap picture;
};

struct CPeer {
  CPeer() {
    plot.setAttribute(Qt::WA_DontShowOnScreen);
    plot.setNotAntialiasedElements(QCP::aeAll);
    plot.setPlottingHints(QCP::phFastPolylines | QCP::phCacheLabels);
    plot.axisRect()->setAutoMargins(QCP::msNone);
    plot.axisRect()->setMargins({});
    for (QCPAxis* axis : plot.axisRect()->axes()) axis->setVisible(false), axis->grid()->setVisible(false);
    plot.xAxis->setRangeReversed(true);
    plot.xAxis->setRange(0, kTrendPoints - 1);
    plot.yAxis->setRange(kMinimum, kMaximum);
    UINT position = CSimpleColor::GetFirstPosition();
    for (int curve = 0; curve < kCurves; ++curve) {
      const COLORREF colour = CSimpleColor::GetNextColor(position);
      QCPGraph* graph = plot.addGraph();
      graph->setPen(QPen(QColor(colour & 0xFF, colour >> 8 & 0xFF, colour >> 16), 1));
      for (int point = 0; point < kTrendPoints; ++point)
        graph->addData(point, static_cast<double>(ValueOf(curve, point)));
    }
    plot.resize(kSize.cx, kSize.cy);
    plot.show();
  }

  QCustomPlot plot;
};

// The number of pixels under the curves; similar on both sides if they draw the same.
int Coloured(const QImage& image) {
  int count = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) count += (image.pixel(x, y) & 0xFFFFFF) != 0xFFFFFF;
  return count;
}

void TrendDrawn(benchmark::State& state) {
  CTrend trend;
  for (auto _ : state) trend.Draw();
  QImage image(kSize.cx, kSize.cy, QImage::Format_RGB32);
  CPeer peer;
  QCPPainter painter(&image);
  peer.plot.toPainter(&painter, kSize.cx, kSize.cy);
  const double ratio = double(Coloured(trend.picture.Image())) / Coloured(image);
  if (std::abs(ratio - 1) > 0.05)
    state.SkipWithError(("not the same curves: " + std::to_string(ratio)).c_str());
}

// Uses toPainter, which is faster than replot.
void PlotPainted(benchmark::State& state) {
  CPeer peer;
  QImage image(kSize.cx, kSize.cy, QImage::Format_RGB32);
  for (auto _ : state) {
    QCPPainter painter(&image);
    peer.plot.toPainter(&painter, kSize.cx, kSize.cy);
  }
}

BENCHMARK(TrendDrawn);
BENCHMARK(PlotPainted);

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  return vastra::bench::RunWithGoals(
      argc, argv,
      {{"20 curves of 100 points redrawn : QCustomPlot", {"TrendDrawn"}, {"PlotPainted"}, 2, true}});
}
