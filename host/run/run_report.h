// CRunReport: what a healthy run says: at its start what is read, logged and written, where and how often;
// each log that was closed; once an hour the counts.
#pragma once

#include <functional>
#include <set>

#include "host/run/run_observer.h"

namespace vastra {

class CRunReport : public CRunObserver {
 public:
  using CSay = std::function<void(const std::string&)>;

  // period: of the scans; 0: as fast as possible. say gets each line.
  CRunReport(const CConfiguration& configuration, const CLoopOptions& options, CSay say);

  void Started(const CStringArray& names) override;
  void Counted(const CRunCounts& counts) override { Count(counts, std::chrono::steady_clock::now()); }
  void Count(const CRunCounts& counts, std::chrono::steady_clock::time_point now);
  void LogClosed(const CLogSource& source, const CSavedLog& log) override;

 private:
  const CSay m_say;
  std::vector<std::string> m_start;               // the lines at the start
  std::set<CString> m_binary;                     // keys of the outputs and summaries that save a binary log
  std::chrono::steady_clock::time_point m_due{};  // of the next counts
};

}  // namespace vastra
