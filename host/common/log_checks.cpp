// The checks of outputs and summaries that write files: their folders, names and limits; and the clock.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>

#include "host/common/check_list.h"
#include "host/common/folder_trial.h"
#include "host/common/key_path.h"
#include "host/common/name_set.h"
#include "vastra/platform/file_layer.h"
#include "vastra/platform/time.h"

namespace vastra {
namespace {

namespace fs = std::filesystem;

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

// A text that two folders have in common if they are the same one.
std::string IdentityOf(const CString& folder) {
  CFileStatus status;
  if (FileLayer().Stat(folder, status))
    return std::to_string(status.device) + ":" + std::to_string(status.inode);
  std::error_code failed;
  const fs::path place = fs::weakly_canonical(folder.Std(), failed);
  return failed ? folder.Std() : place.string();
}

// The files that two outputs without a policy count in common, in words.
CString CountedByBoth(const CLogNaming& a, const CLogNaming& b) {
  const bool binary = a.saveRp && b.saveRp && a.extension == b.extension;
  const bool text = a.saveCsv && b.saveCsv;
  return (binary ? a.extension : CString()) + (binary && text ? " and " : "") + (text ? ".csv" : "");
}

// The names of logs begin with the prefix, so two that differ within the shorter one cannot be equal.
bool DifferInPrefix(const CLogNaming& a, const CLogNaming& b) {
  const std::size_t both = std::min(a.prefix.View().size(), b.prefix.View().size());
  return a.prefix.View().substr(0, both) != b.prefix.View().substr(0, both);
}

// former: the outputs and summaries before target in the same folder, at least one.
void CheckShared(const CLogTarget& target, const std::vector<const CLogTarget*>& former, bool keepsLogs,
                 CFindings& findings) {
  const CLogTarget* rival = nullptr;
  bool meets = false;
  for (const CLogTarget* other : former) {
    if (!keepsLogs && !rival && !CountedByBoth(other->naming, target.naming).IsEmpty()) rival = other;
    if (DifferInPrefix(other->naming, target.naming) || !CanNamesMeet(other->naming, target.naming)) continue;
    meets = true;
    findings.Refuse(target.key + ".directory",
                    "the logs of " + other->key +
                        " can have the same names in that folder; use another folder or other prefixes");
  }
  if (meets) return;
  const CString words = rival ? ": each counts, and removes, the " +
                                    CountedByBoth(rival->naming, target.naming) + " logs of the other"
                              : CString(": each counts its own logs alone");
  const CString text = "is that of " + (rival ? rival : former.front())->key + " too" + words;
  rival ? findings.Warn(target.key + ".directory", text) : findings.Note(target.key + ".directory", text);
}

}  // namespace

void CheckSharedFolders(const CCheckContext& context, CFindings& findings) {
  std::map<std::string, std::vector<const CLogTarget*>> users;
  for (const CLogTarget& target : context.targets) {
    if (target.directory.IsEmpty()) continue;
    std::vector<const CLogTarget*>& former = users[IdentityOf(target.directory)];
    if (!former.empty()) CheckShared(target, former, context.options.keepsLogs, findings);
    former.push_back(&target);
  }
}

// One line for each target: a list can have thousands of logs.
void CheckReplayed(const CCheckContext& context, CFindings& findings) {
  if (context.isLive) return;
  const bool keepsLogs = context.options.keepsLogs;
  const CStringList& replayed =
      context.options.replayed ? *context.options.replayed : context.configuration.m_input.m_inputFiles;
  for (const CLogTarget& target : context.targets) {
    int index = 0;
    for (const CString& path : replayed) {
      const CString key = KeyPath("input.inputFiles", index++);
      if (!IsOwnLog(target, path, keepsLogs)) continue;
      findings.Refuse(target.key + ".directory",
                      key + ", " + path +
                          ", counts as a log of this output and could be removed; use another folder" +
                          (keepsLogs ? " or a prefix" : ""));
      break;
    }
  }
}

void CheckFolderNames(const CCheckContext& context, CFindings& findings) {
  if (context.options.folders == EFolders::leaveOut) return;
  for (const CLogTarget& target : context.targets)
    if (target.directory.IsEmpty())
      findings.Refuse(target.key + ".directory", "is empty: there is no folder for the logs");
}

// A full disk is a warning: the logs wait until there is space.
void CheckFolders(const CCheckContext& context, CFindings& findings) {
  if (context.options.folders == EFolders::leaveOut) return;
  std::map<CString, CFolderTrial> trials;
  for (const CLogTarget& target : context.targets) {
    if (target.directory.IsEmpty()) continue;
    const CString key = target.key + ".directory";
    const auto [trial, isFirst] = trials.try_emplace(target.directory);
    if (isFirst) trial->second = TryFolder(target.directory, context.options.folders == EFolders::create);
    if (trial->second.error == 0) continue;
    const CString text = target.directory + ": " + std::strerror(trial->second.error);
    trial->second.isFull ? findings.Warn(key, text) : findings.Refuse(key, text);
  }
}

void CheckLimits(const CCheckContext& context, CFindings& findings) {
  for (const CLogTarget& target : context.targets) {
    if (target.maxLogs == 0)
      findings.Refuse(target.key + "." + target.maxLogsName, "0 removes each log as soon as it is written");
    if (target.maxSamples == 0)
      findings.Warn(target.key + ".maxSamples", "0 makes each sample a log of its own");
  }
}

void CheckSaving(const CCheckContext& context, CFindings& findings) {
  const CConfiguration& configuration = context.configuration;
  const auto check = [&](const char* list, int index, bool saves) {
    if (!saves) findings.Warn(KeyPath(list, index), "saves nothing: saveRp and saveCsv are 0");
  };
  int index = 0;
  for (const COutputConfig* output : configuration.m_outputs.m_outputs)
    check("outputs", index++, output->m_saveRp || output->m_saveCsv);
  index = 0;
  for (const CSummaryConfig* summary : configuration.m_summaries.m_summaries)
    check("summaries", index++, summary->m_saveRp || summary->m_saveCsv);
  if (configuration.m_outputs.m_outputs.IsEmpty() && configuration.m_summaries.m_summaries.IsEmpty())
    findings.Warn("outputs", "there is no output and no summary: nothing is logged");
}

void CheckPrefixes(const CCheckContext& context, CFindings& findings) {
  int index = 0;
  for (const COutputConfig* output : context.configuration.m_outputs.m_outputs) {
    const CString key = KeyPath("outputs", index++) + ".prefix";
    const CString& prefix = output->m_prefix;
    if (!output->m_usePrefix) continue;
    if (prefix.Find('/') >= 0 || prefix == "." || prefix == "..")
      findings.Refuse(key, Quoted(prefix) + " is not the beginning of a file name in the folder of the logs");
  }
}

void CheckLogNames(const CCheckContext& context, CFindings& findings) {
  int index = 0;
  for (const COutputConfig* output : context.configuration.m_outputs.m_outputs) {
    const CString key = KeyPath("outputs", index++) + ".nameVariable";
    if (output->m_nameVariable.IsEmpty() && (output->m_saveRp || output->m_saveCsv))
      findings.Warn(key, "is empty: each log is named \"NoValue\"; \"System Time\" names the logs by time");
  }
}

void CheckClock(const CCheckContext& context, CFindings& findings) {
  constexpr std::int64_t kYear2020 = 1577836800, kYear2038 = 2145916800;
  constexpr std::int64_t kTimes = std::int64_t{1} << 32;  // of a time stamp, which wraps around in 2038
  if (!context.isLive) return;
  _timeb stamp;
  _ftime(stamp);
  std::int64_t now = stamp.time;
  if (now >= kYear2020 && now < kYear2038) return;
  if (now < 0) now += kTimes;
  const std::tm local = CTime(now).GetLocalTm();
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  findings.Warn("clock", CString(text) +
                             " is before 2020 or after 2037: the times and names of the logs are "
                             "wrong until the clock is set");
}

}  // namespace vastra
