#include "host/common/log_places.h"

#include "host/common/key_path.h"

namespace vastra {
namespace {
constexpr const char* kLogPlaceFlags[] = {"WriteToLog"};
constexpr const char* kSummaryPlaceFlags[] = {"SampleIsValid", "WriteToSummary"};
}  // namespace

std::vector<CLogPlace> FindLogPlaces(const CConfiguration& configuration) {
  std::vector<CLogPlace> places;
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs) {
    const CString key = KeyPath("outputs", index++);
    if (output->m_saveRp || output->m_saveCsv)
      places.push_back({key, output->m_directory, output->m_maxLogs, "maxLogs", output->m_maxSamples,
                        output->m_enableEquations, kLogPlaceFlags});
  }
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries) {
    const CString key = KeyPath("summaries", index++);
    if (summary->m_saveRp || summary->m_saveCsv)
      places.push_back({key, summary->m_directory, summary->m_maxSummaries, "maxSummaries",
                        summary->m_maxSamples, summary->m_enableEquations, kSummaryPlaceFlags});
  }
  return places;
}

}  // namespace vastra
