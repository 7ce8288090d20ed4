// Reads what a catalogue lists of a log: its head and its times, never its values.
#pragma once

#include <map>
#include <string>

#include "vastra/history/history_log.h"

namespace vastra {

class CDigestReader;

// The lists of names of the logs that were looked at, each once: most logs of a folder have the same names.
class CNamesPool {
 public:
  // The names in bytes, which are count strings of a log.
  CSharedNames Get(const std::string& bytes, std::uint32_t count);
  CSharedNames Get(const CStringArray& names);

 private:
  CSharedNames Share(std::vector<CString> names);

  std::map<std::pair<std::string, std::uint32_t>, CSharedNames> m_byBytes;
  std::map<std::vector<CString>, CSharedNames> m_byNames;
};

// The earliest and the latest of some times, and whether they never go backwards.
struct CTimesSpan {
  CMoment first = kEndMoment, last = kFirstMoment;
  CMoment previous = kFirstMoment;
  bool isOrdered = true;

  void Add(const _timeb* times, std::size_t count);
  void PutTo(CHistoryLog& log) const;  // whose samples are set
};

// The log at path. error, if not null, gets errno of a file that cannot be opened, else 0. digest: that of
// the folder, or null. The times of a log that it has are in order: only the first and the last one are read.
CHistoryLog LookAtLog(const CString& path, CNamesPool& pool, int* error = nullptr,
                      const CDigestReader* digest = nullptr);
// The same for a file that was opened at path.
CHistoryLog LookAtLog(const CString& path, CProbedFile& file, CNamesPool& pool,
                      const CDigestReader* digest = nullptr);

}  // namespace vastra
