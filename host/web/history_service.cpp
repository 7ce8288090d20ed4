#include "host/web/history_service.h"

#include <new>

#include "host/web/history_answers.h"

namespace vastra {

namespace {

using CMake = CWebAnswer (*)(const CHistoryRequest& request);

// By the last part of the address.
constexpr std::pair<std::string_view, CMake> kAnswers[] = {
    {"range", RangeAnswer},     {"variables", VariablesAnswer}, {"rows", RowsAnswer},
    {"buckets", BucketsAnswer}, {"gaps", GapsAnswer},           {"logs", LogsAnswer},
    {"log", LogAnswer},         {"log.csv", LogCsvAnswer},      {"rows.csv", RowsCsvAnswer}};

CMake FindAnswer(std::string_view what) {
  for (const auto& [known, make] : kAnswers)
    if (known == what) return make;
  return nullptr;
}

}  // namespace

bool CHistoryService::Has(std::string_view what) { return FindAnswer(what) != nullptr; }

std::vector<CString> CHistoryService::Names(const std::string& name, const CWebStop& isStopped) {
  const auto source = m_findSource(name);
  const CSharedLogs logs = source ? m_catalogues.Logs(*source, isStopped) : nullptr;
  return logs ? NamesOf(*logs) : std::vector<CString>();
}

CWebAnswer CHistoryService::Answer(std::string_view what, const std::string& name, const CWebQuery& query,
                                   const CWebStop& isStopped) try {
  const CMake make = FindAnswer(what);
  if (!make) return ErrorAnswer(404, "no such address");
  auto source = m_findSource(name);
  if (!source) return ErrorAnswer(404, "no logger or folder has this name");
  if (!source->isKnown)
    return ErrorAnswer(
        404, "where its logs are is not known: the logger has not answered since the server started");
  CSharedLogs logs = m_catalogues.Logs(*source, isStopped);
  if (!logs) return ErrorAnswer(503, "the logs are being looked at");
  return make({query, isStopped, std::move(*source), std::move(logs)});
} catch (const CWebRefusal& refusal) {
  return ErrorAnswer(refusal.status, refusal.words);
} catch (const std::bad_alloc&) {
  return ErrorAnswer(503, "not enough memory");
}

}  // namespace vastra
