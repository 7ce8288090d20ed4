#include "host/common/log_checks.h"

#include <filesystem>

#include "host/common/key_path.h"
#include "host/common/log_targets.h"
#include "vastra/platform/time.h"

namespace vastra {
namespace {

namespace fs = std::filesystem;

void AddMeetings(const std::vector<CLogTarget>& targets, std::vector<CString>& lines) {
  for (std::size_t later = 1; later < targets.size(); ++later)
    for (std::size_t former = 0; former < later; ++former)
      if (CanMeet(targets[former].naming, targets[later].naming))
        lines.push_back(targets[later].key + ".directory: the logs of " + targets[former].key +
                        " can have the same names in that folder; use another folder or other prefixes");
}

// Whether target counts a file of its folder as one of its logs. With a policy the name decides, without one
// the extension alone.
bool IsCounted(const CLogNaming& naming, const CString& file, bool keepsLogs) {
  if (keepsLogs) {
    const auto log = naming.IsOwnFile(file);
    return log && naming.Saves(log->form);
  }
  const auto endsIn = [&file](const CString& ending) {
    return file.Right(ending.GetLength()).CompareNoCase(ending) == 0;
  };
  return (naming.saveRp && endsIn(naming.extension)) || (naming.saveCsv && endsIn(".csv"));
}

// Whether the path leads to a file that target counts as one of its logs. A link is one, and what it leads
// to.
bool IsOwnLog(const CLogTarget& target, const CString& path, bool keepsLogs) {
  std::error_code failed;
  const fs::path folder = fs::canonical(target.directory.Std(), failed);
  if (failed) return false;
  const fs::path typed = path.Std();
  for (const fs::path& file :
       {fs::canonical(typed.parent_path(), failed) / typed.filename(), fs::weakly_canonical(typed, failed)}) {
    const CString name(file.filename().string());
    if (file.parent_path() == folder && IsCounted(target.naming, name, keepsLogs)) return true;
  }
  return false;
}

// One line for each target: a list can have thousands of logs.
void AddEaters(const CStringList& replayed, const std::vector<CLogTarget>& targets, bool keepsLogs,
               std::vector<CString>& lines) {
  for (const CLogTarget& target : targets) {
    int index = 0;
    for (const CString& path : replayed) {
      const CString key = KeyPath("input.inputFiles", index++);
      if (!IsOwnLog(target, path, keepsLogs)) continue;
      lines.push_back(target.key + ".directory: " + key + ", " + path +
                      ", counts as a log of this output and could be removed; use another folder" +
                      (keepsLogs ? " or a prefix" : ""));
      break;
    }
  }
}

}  // namespace

std::vector<CString> FindLogRefusals(const CConfiguration& configuration, bool keepsLogs) {
  const std::vector<CLogTarget> targets = FindLogTargets(configuration);
  std::vector<CString> lines;
  AddMeetings(targets, lines);
  if (configuration.m_input.m_simulating)
    AddEaters(configuration.m_input.m_inputFiles, targets, keepsLogs, lines);
  return lines;
}

CString FindClockFault() {
  constexpr std::int64_t kYear2020 = 1577836800, kYear2038 = 2145916800;
  constexpr std::int64_t kTimes = std::int64_t{1} << 32;  // of a time stamp, which wraps around in 2038
  _timeb stamp;
  _ftime(stamp);
  std::int64_t now = stamp.time;
  if (now >= kYear2020 && now < kYear2038) return {};
  if (now < 0) now += kTimes;
  const std::tm local = CTime(now).GetLocalTm();
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return "clock: " + CString(text) +
         " is before 2020 or after 2037: the times and names of the logs are wrong until the clock is set";
}

}  // namespace vastra
