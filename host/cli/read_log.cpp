#include "host/cli/read_log.h"

#include "host/cli/files.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/platform/file_system.h"

namespace vastra {

CString ReadLog(const CFileArgument& file, CStringArray& names, CSampleStore& samples) {
  const CString other = OtherThanFile(file.path);
  if (!other.IsEmpty() && FileExists(file.path)) return "is " + other + ", not a log";
  CLogReader reader(samples);
  if (!reader.Open(file.path) || !reader.ReadSamples()) return reader.GetFault();
  reader.GetNames(names);
  return {};
}

}  // namespace vastra
