#include "host/common/log_targets.h"

#include "host/common/key_path.h"
#include "vastra/stages/single_enable.h"

namespace vastra {
namespace {

// The flags without which nothing is written.
constexpr std::span kOutputFlags = std::span(kLogFlags).subspan(1, 1);
constexpr std::span kSummaryRowFlags = std::span(kSummaryFlags).first(2);

CLogNaming NamingOf(const COutputConfig& output) {
  return {output.m_directory,
          output.m_usePrefix ? output.m_prefix : CString(),
          output.m_nameVariable,
          output.m_dwordName != 0,
          ".rph",
          output.m_saveRp != 0,
          output.m_saveCsv != 0};
}

CLogNaming NamingOf(const CSummaryConfig& summary) {
  return {summary.m_directory, "", kSystemTime, false, ".rpd", summary.m_saveRp != 0, summary.m_saveCsv != 0};
}

}  // namespace

std::vector<CLogTarget> FindLogTargets(const CConfiguration& configuration) {
  std::vector<CLogTarget> targets;
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs) {
    const CString key = KeyPath("outputs", index++);
    if (output->m_saveRp || output->m_saveCsv)
      targets.push_back({key, output->m_directory, output->m_maxLogs, "maxLogs", output->m_maxSamples,
                         output->m_enableEquations, kOutputFlags, NamingOf(*output)});
  }
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries) {
    const CString key = KeyPath("summaries", index++);
    if (summary->m_saveRp || summary->m_saveCsv)
      targets.push_back({key, summary->m_directory, summary->m_maxSummaries, "maxSummaries",
                         summary->m_maxSamples, summary->m_enableEquations, kSummaryRowFlags,
                         NamingOf(*summary)});
  }
  return targets;
}

}  // namespace vastra
