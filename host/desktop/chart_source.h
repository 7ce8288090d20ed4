// What a chart of a logger reads: the folders of its logs, and its newest samples.
#pragma once

#include "host/attach/feed_events.h"
#include "host/common/configuration.h"
#include "host/run/run_observer.h"
#include "vastra/charts/chart_data.h"
#include "vastra/charts/live_samples.h"

namespace vastra {

// Keeps the newest samples of a run. Of an attached logger the window calls it as a run does.
class CChartSamples : public CRunObserver {
 public:
  std::shared_ptr<const CLiveSamples> Samples() const { return m_samples; }

  void Started(const CStringArray& names) override;
  void Renamed(const CStringArray& names) override { Started(names); }
  void Sampled(const CLogSample& sample) override;

 private:
  const std::shared_ptr<CLiveSamples> m_samples = std::make_shared<CLiveSamples>();
};

// The folder of an output or summary; a relative one is below the current directory, as for the logger.
std::vector<CChartPath> ChartPathsOf(const COutputConfig& output);
std::vector<CChartPath> ChartPathsOf(const CSummaryConfig& summary);
// Those of all outputs and summaries that write files, each once.
std::vector<CChartPath> ChartPathsOf(const CConfiguration& configuration);
// Those of a running logger. Its samples come from a feed, which sends some of them.
std::vector<CChartPath> ChartPathsOf(const CHelloLine& hello);

}  // namespace vastra
