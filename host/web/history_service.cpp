#include "host/web/history_service.h"

#include <new>

#include "host/web/history_answers.h"

namespace vastra {

CWebAnswer CHistoryService::Answer(CMake make, const std::string& name, const CWebQuery& query,
                                   const CWebStop& isStopped) try {
  auto source = m_findSource(name);
  if (!source) return ErrorAnswer(404, "there is no logger or folder of this name");
  CSharedLogs logs = m_catalogues.Logs(*source, isStopped);
  if (!logs) return ErrorAnswer(503, "the logs are being looked at");
  return make({query, isStopped, std::move(*source), std::move(logs)});
} catch (const CWebRefusal& refusal) {
  return ErrorAnswer(refusal.status, refusal.words);
} catch (const std::bad_alloc&) {
  return ErrorAnswer(503, "not enough memory");
}

CWebAnswer CHistoryService::Range(const std::string& name, const CWebQuery& query,
                                  const CWebStop& isStopped) {
  return Answer(RangeAnswer, name, query, isStopped);
}
CWebAnswer CHistoryService::Variables(const std::string& name, const CWebQuery& query,
                                      const CWebStop& isStopped) {
  return Answer(VariablesAnswer, name, query, isStopped);
}
CWebAnswer CHistoryService::Rows(const std::string& name, const CWebQuery& query, const CWebStop& isStopped) {
  return Answer(RowsAnswer, name, query, isStopped);
}
CWebAnswer CHistoryService::Buckets(const std::string& name, const CWebQuery& query,
                                    const CWebStop& isStopped) {
  return Answer(BucketsAnswer, name, query, isStopped);
}
CWebAnswer CHistoryService::Gaps(const std::string& name, const CWebQuery& query, const CWebStop& isStopped) {
  return Answer(GapsAnswer, name, query, isStopped);
}
CWebAnswer CHistoryService::Logs(const std::string& name, const CWebQuery& query, const CWebStop& isStopped) {
  return Answer(LogsAnswer, name, query, isStopped);
}
CWebAnswer CHistoryService::Log(const std::string& name, const CWebQuery& query, const CWebStop& isStopped) {
  return Answer(LogAnswer, name, query, isStopped);
}
CWebAnswer CHistoryService::LogCsv(const std::string& name, const CWebQuery& query,
                                   const CWebStop& isStopped) {
  return Answer(LogCsvAnswer, name, query, isStopped);
}
CWebAnswer CHistoryService::RowsCsv(const std::string& name, const CWebQuery& query,
                                    const CWebStop& isStopped) {
  return Answer(RowsCsvAnswer, name, query, isStopped);
}

}  // namespace vastra
