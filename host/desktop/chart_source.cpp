#include "host/desktop/chart_source.h"

#include <algorithm>

#include "host/common/paths.h"

namespace vastra {
namespace {

void AddFolder(const CString& folder, std::vector<CChartPath>& paths) {
  if (folder.IsEmpty()) return;
  const CString path = MakeAbsolute(folder);
  const auto isSame = [&](const CChartPath& known) { return known.path == path; };
  if (std::none_of(paths.begin(), paths.end(), isSame)) paths.push_back({path, false});
}

template <class TConfig>
void AddFolderOf(const TConfig& config, std::vector<CChartPath>& paths) {
  if (config.m_saveRp || config.m_saveCsv) AddFolder(config.m_directory, paths);
}

}  // namespace

void CChartSamples::Started(const CStringArray& names) { m_samples->Begin({names.begin(), names.end()}); }

void CChartSamples::Sampled(const CLogSample& sample) {
  m_samples->Add(sample.m_time, sample.m_values.GetData(),
                 static_cast<std::size_t>(sample.m_values.GetSize()));
}

std::vector<CChartPath> ChartPathsOf(const COutputConfig& output) {
  std::vector<CChartPath> paths;
  AddFolder(output.m_directory, paths);
  return paths;
}

std::vector<CChartPath> ChartPathsOf(const CSummaryConfig& summary) {
  std::vector<CChartPath> paths;
  AddFolder(summary.m_directory, paths);
  return paths;
}

std::vector<CChartPath> ChartPathsOf(const CConfiguration& configuration) {
  std::vector<CChartPath> paths;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs) AddFolderOf(*output, paths);
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries) AddFolderOf(*summary, paths);
  return paths;
}

std::vector<CChartPath> ChartPathsOf(const CHelloLine& hello) {
  std::vector<CChartPath> paths;
  for (const std::vector<CStageFacts>* stages : {&hello.outputs, &hello.summaries})
    for (const CStageFacts& stage : *stages)
      if (stage.folder.starts_with('/')) AddFolder(CString(stage.folder), paths);
  return paths;
}

}  // namespace vastra
