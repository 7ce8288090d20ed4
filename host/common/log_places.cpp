#include "host/common/log_places.h"

#include <filesystem>

namespace vastra {
namespace {

CString Key(const char* list, int index) {
  CString key;
  key.Format("%s[%d]", list, index);
  return key;
}

std::filesystem::path Place(const CString& directory) {
  std::error_code failed;
  const std::filesystem::path given(directory.IsEmpty() ? "." : directory.Std());
  return std::filesystem::weakly_canonical(given, failed);
}

// The first of places that has the directory of places[index], or index itself.
std::size_t FirstWithDirectoryOf(const std::vector<CLogPlace>& places, std::size_t index) {
  std::size_t first = 0;
  while (Place(places[first].directory) != Place(places[index].directory)) ++first;
  return first;
}

}  // namespace

std::vector<CLogPlace> FindLogPlaces(const CConfiguration& configuration) {
  std::vector<CLogPlace> places;
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs) {
    const CString key = Key("outputs", index++);
    if (output->m_saveRp || output->m_saveCsv)
      places.push_back({key, output->m_directory, output->m_maxLogs, "maxLogs", output->m_maxSamples});
  }
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries) {
    const CString key = Key("summaries", index++);
    if (summary->m_saveRp || summary->m_saveCsv)
      places.push_back(
          {key, summary->m_directory, summary->m_maxSummaries, "maxSummaries", summary->m_maxSamples});
  }
  return places;
}

std::vector<CString> FindWarnings(const CConfiguration& configuration) {
  std::vector<CString> warnings;
  const std::vector<CLogPlace> places = FindLogPlaces(configuration);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const CLogPlace& place = places[i];
    if (place.maxLogs == 0)
      warnings.push_back(place.key + "." + place.maxLogsName +
                         ": 0 removes each log as soon as it is written");
    if (place.maxSamples == 0)
      warnings.push_back(place.key + ".maxSamples: 0 makes each sample a log of its own");
    if (const std::size_t first = FirstWithDirectoryOf(places, i); first != i)
      warnings.push_back(place.key + ".directory: is that of " + places[first].key +
                         " too: each counts, and removes, the logs of the other");
  }
  return warnings;
}

}  // namespace vastra
