#include "host/common/replay_list.h"

#include <algorithm>

#include "host/common/key_path.h"
#include "host/common/paths.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

struct CListedLog {
  const CString* path;
  CString fault;
  std::int32_t firstTime = 0;
  CStringArray names;
};

CString WhatIsWrong(CListedLog& log, CSampleStore& samples) {
  const CString other = OtherThanFile(*log.path);
  if (!other.IsEmpty() && FileExists(*log.path)) return "is " + other + ", not a log";
  CLogReader reader(samples);
  if (!reader.Open(*log.path)) return reader.GetFault();
  log.firstTime = reader.GetStart().m_firstTime;
  reader.GetNames(log.names);
  return reader.ReadSamples() ? CString() : reader.GetFault();
}

std::vector<CListedLog> Look(const CStringList& files) {
  std::vector<CListedLog> logs;
  CSampleStore samples;
  for (const CString& path : files) {
    logs.push_back({&path, {}, 0, {}});
    logs.back().fault = WhatIsWrong(logs.back(), samples);
  }
  return logs;
}

// The good log that is played first: its variables are those of the replay. Null if there is none.
const CListedLog* FirstOf(const std::vector<CListedLog>& logs) {
  const CListedLog* first = nullptr;
  for (const CListedLog& log : logs)
    if (log.fault.IsEmpty() && (!first || log.firstTime < first->firstTime)) first = &log;
  return first;
}

}  // namespace

CReplayList CheckReplayList(const CStringList& files) {
  std::vector<CListedLog> logs = Look(files);
  CReplayList list;
  if (const CListedLog* first = FirstOf(logs))
    for (CListedLog& log : logs)
      if (log.fault.IsEmpty() && !(log.names == first->names))
        log.fault = "has other variables than " + *first->path;
  int index = 0;
  for (const CListedLog& log : logs) {
    const CString key = KeyPath("input.inputFiles", index++);
    if (log.fault.IsEmpty())
      list.files.AddTail(*log.path);
    else
      list.faults.push_back(key + ": " + *log.path + ": " + log.fault);
  }
  return list;
}

std::vector<CString> LeaveOutBadLogs(CConfiguration& configuration) {
  if (!configuration.m_input.m_simulating) return {};
  CReplayList list = CheckReplayList(configuration.m_input.m_inputFiles);
  configuration.m_input.m_inputFiles = list.files;
  return list.faults;
}

}  // namespace vastra
