// CHistoryService: answers what was logged: ranges, rows, buckets, gaps, and the logs as files. docs/web.md
// describes the answers. The server calls it from any thread; it only reads.
#pragma once

#include "host/web/history_catalogues.h"

namespace vastra {

class CHistoryService {
 public:
  // The logs of a logger or a folder by its name; empty if there is none. Called from any thread.
  using CFindSource = std::function<std::optional<CHistorySource>(const std::string& name)>;

  explicit CHistoryService(CFindSource findSource, const CCatalogueLimits& limits = {})
      : m_findSource(std::move(findSource)), m_catalogues(limits) {}

  // Whether what is one of the answers of docs/web.md: "range", "rows", "log.csv", ...
  static bool Has(std::string_view what);
  // The variables of the logs; empty for an unknown name.
  std::vector<CString> Names(const std::string& name, const CWebStop& isStopped = {});
  // Returns an error of docs/web.md if the name or a parameter is wrong, and 503 soon after isStopped, if not
  // empty, has returned true.
  CWebAnswer Answer(std::string_view what, const std::string& name, const CWebQuery& query,
                    const CWebStop& isStopped = {});

  // To be called now and then: frees the catalogues that were not used for long.
  void DropUnused() { m_catalogues.DropUnused(); }

 private:
  const CFindSource m_findSource;
  CHistoryCatalogues m_catalogues;
};

}  // namespace vastra
