// CHistoryService: answers what was logged: ranges, rows, buckets, gaps, and the logs as files. docs/web.md
// describes the answers. The server calls it from any thread; it only reads.
#pragma once

#include "host/web/history_catalogues.h"

namespace vastra {

struct CHistoryRequest;

class CHistoryService {
 public:
  // The logs of a logger or a folder by its name; empty if there is none. Called from any thread.
  using CFindSource = std::function<std::optional<CHistorySource>(const std::string& name)>;

  explicit CHistoryService(CFindSource findSource, const CCatalogueLimits& limits = {})
      : m_findSource(std::move(findSource)), m_catalogues(limits) {}

  // Each answers with an error of docs/web.md if the name or a parameter is wrong, and with 503 soon after
  // isStopped, if not empty, has returned true.
  CWebAnswer Range(const std::string& name, const CWebQuery& query, const CWebStop& isStopped = {});
  CWebAnswer Variables(const std::string& name, const CWebQuery& query, const CWebStop& isStopped = {});
  CWebAnswer Rows(const std::string& name, const CWebQuery& query, const CWebStop& isStopped = {});
  CWebAnswer Buckets(const std::string& name, const CWebQuery& query, const CWebStop& isStopped = {});
  CWebAnswer Gaps(const std::string& name, const CWebQuery& query, const CWebStop& isStopped = {});
  CWebAnswer Logs(const std::string& name, const CWebQuery& query, const CWebStop& isStopped = {});
  CWebAnswer Log(const std::string& name, const CWebQuery& query, const CWebStop& isStopped = {});
  CWebAnswer LogCsv(const std::string& name, const CWebQuery& query, const CWebStop& isStopped = {});
  CWebAnswer RowsCsv(const std::string& name, const CWebQuery& query, const CWebStop& isStopped = {});

  // To be called now and then: frees the catalogues that were not used for long.
  void DropUnused() { m_catalogues.DropUnused(); }

 private:
  using CMake = CWebAnswer (*)(const CHistoryRequest& request);
  CWebAnswer Answer(CMake make, const std::string& name, const CWebQuery& query, const CWebStop& isStopped);

  const CFindSource m_findSource;
  CHistoryCatalogues m_catalogues;
};

}  // namespace vastra
