#include "vastra/logfiles/log_rotation.h"

#include <algorithm>
#include <cerrno>

#include "vastra/logfiles/whole_log.h"
#include "vastra/platform/file.h"
#include "vastra/platform/file_layer.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/time.h"

namespace vastra {
namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;  // in a second
constexpr double kSecondsInADay = 86400;

// Whether a clock can be right: from 2020 to 2037.
bool IsPlausible(std::int64_t seconds) { return seconds >= 1'577'836'800 && seconds < 2'145'916'800; }

}  // namespace

void CLogRotation::Saved(const CString& name) {
  if (!List()) return;
  for (const ELogForm form : kLogForms) {
    CLogs& logs = Of(form).logs;
    logs.erase(std::remove_if(logs.begin(), logs.end(), [&](const CLog& log) { return log.name == name; }),
               logs.end());
    CFileStatus status;
    if (m_naming.Saves(form) && FileLayer().Stat(m_naming.PathOf(name, form), status))
      logs.push_back({name, status.lastWrite, status.size});
  }
}

void CLogRotation::Rotate(CRotation& rotation) {
  if (!List()) return;
  BeginRotation();
  if (IsAboveLimit()) ForgetMissing(rotation);
  for (const ELogForm form : kLogForms) {
    RemoveMany(form, rotation);
    RemoveOld(form, rotation);
  }
  RemoveBytes(BytesToRemove(), rotation);
}

bool CLogRotation::RemoveOldest(CRotation& rotation) {
  if (!List()) return false;
  BeginRotation();
  std::uint64_t bytes = 0;
  while (bytes == 0 && RemoveOldestLog(rotation, bytes)) continue;
  return bytes > 0;
}

bool CLogRotation::IsAboveLimit() const {
  return std::any_of(std::begin(m_forms), std::end(m_forms),
                     [this](const CForm& form) { return form.logs.size() > m_maxLogs; }) ||
         BytesToRemove() > 0;
}

// Fills the lists from the folder. False if it cannot be listed; the next call tries again.
bool CLogRotation::List() {
  std::vector<CFolderEntry> entries;
  if (m_isListed) return true;
  if (!FileLayer().List(m_naming.Folder(), "", entries)) return false;
  for (const CFolderEntry& entry : entries) {
    if (entry.status.type != EFileType::regular) continue;
    const auto log = m_naming.IsOwnFile(entry.name);
    if (log && m_naming.Saves(log->form) && IsWholeLog(JoinPath(m_naming.directory, entry.name), log->form))
      Of(log->form).logs.push_back({log->name, entry.status.lastWrite, entry.status.size});
  }
  for (CForm& form : m_forms) std::sort(form.logs.begin(), form.logs.end());
  return m_isListed = true;
}

// Files that could not be removed are tried again.
void CLogRotation::BeginRotation() {
  for (CForm& form : m_forms) {
    form.logs.insert(form.logs.begin(), form.stuck.begin(), form.stuck.end());
    form.stuck.clear();
  }
}

// A log that somebody else has removed must not count: an older one would be removed in its place.
void CLogRotation::ForgetMissing(CRotation& rotation) {
  for (const ELogForm form : kLogForms) {
    CLogs& logs = Of(form).logs;
    const auto isMissing = [&](const CLog& log) {
      CFileStatus status;
      const bool is = !FileLayer().Stat(m_naming.PathOf(log.name, form), status) && errno == ENOENT;
      if (is && CountsRows(form)) rotation.missing.push_back(log.name);
      return is;
    };
    logs.erase(std::remove_if(logs.begin(), logs.end(), isMissing), logs.end());
  }
}

// The oldest log of the form that may be removed; the end of its list if there is none.
CLogRotation::CLogs::iterator CLogRotation::Oldest(ELogForm form) {
  CLogs& logs = Of(form).logs;
  const auto newest = logs.empty() ? logs.end() : logs.end() - 1;
  const auto oldest = std::find_if(logs.begin(), newest, [&](const CLog& log) { return !IsSaving(log); });
  return oldest == newest ? logs.end() : oldest;
}

// Removes the file of the log, which leaves its list in any case. Returns the bytes that are free then.
std::uint64_t CLogRotation::Remove(ELogForm form, CLogs::iterator log, CRotation& rotation) {
  CForm& its = Of(form);
  const CString path = m_naming.PathOf(log->name, form);
  const int removed = FileLayer().Remove(path);
  const bool isMissing = !removed && errno == ENOENT;
  if (CountsRows(form) && removed) rotation.removed.push_back(log->name);
  if (CountsRows(form) && isMissing) rotation.missing.push_back(log->name);
  if (!removed && !isMissing) {
    if (its.told.insert(log->name).second)
      rotation.faults.push_back(
          path + ": this log, which is the oldest, cannot be removed: " + CFileException(path, errno).Text());
    its.stuck.push_back(*log);
  }
  const std::uint64_t bytes = removed ? log->size : 0;
  its.logs.erase(log);
  return bytes;
}

// Removes all forms of the oldest log and adds their sizes to bytes. False if no log may be removed.
bool CLogRotation::RemoveOldestLog(CRotation& rotation, std::uint64_t& bytes) {
  const CLog* oldest = nullptr;
  for (const ELogForm form : kLogForms)
    if (const auto log = Oldest(form); log != Of(form).logs.end() && (!oldest || *log < *oldest))
      oldest = &*log;
  if (!oldest) return false;
  const CString name = oldest->name;
  for (const ELogForm form : kLogForms) {
    CLogs& logs = Of(form).logs;
    const auto log =
        std::find_if(logs.begin(), logs.end(), [&](const CLog& one) { return one.name == name; });
    if (log != logs.end() && log + 1 != logs.end()) bytes += Remove(form, log, rotation);
  }
  return true;
}

void CLogRotation::RemoveMany(ELogForm form, CRotation& rotation) {
  CLogs& logs = Of(form).logs;
  while (logs.size() > m_maxLogs) {
    const auto log = Oldest(form);
    if (log == logs.end()) return;
    Remove(form, log, rotation);
  }
}

void CLogRotation::RemoveOld(ELogForm form, CRotation& rotation) {
  _timeb now;
  _ftime(now);
  if (m_retention.keepDays <= 0 || !IsPlausible(now.time)) return;
  const double kept = m_retention.keepDays * kSecondsInADay;
  const auto isOld = [&](const CLog& log) {
    const std::int64_t written = log.lastWrite / kNanoseconds;
    return IsPlausible(written) && static_cast<double>(now.time - written) > kept && !IsSaving(log);
  };
  CLogs& logs = Of(form).logs;
  for (std::size_t i = 0; i + 1 < logs.size();)
    isOld(logs[i]) ? Remove(form, logs.begin() + static_cast<std::ptrdiff_t>(i), rotation) : ++i;
}

void CLogRotation::RemoveBytes(std::uint64_t bytes, CRotation& rotation) {
  std::uint64_t removed = 0;
  while (removed < bytes && RemoveOldestLog(rotation, removed)) continue;
}

// How many bytes are above the limits: of all logs, and of the file system that are to stay free.
std::uint64_t CLogRotation::BytesToRemove() const {
  std::uint64_t total = 0, free = 0;
  for (const CForm& form : m_forms)
    for (const CLog& log : form.logs) total += log.size;
  const auto above = [](std::uint64_t value, std::uint64_t limit) {
    return value > limit ? value - limit : 0;
  };
  const bool isKnown = m_retention.minFree && FileLayer().FreeBytes(m_naming.Folder(), free);
  return std::max(m_retention.keepBytes ? above(total, m_retention.keepBytes) : 0,
                  isKnown ? above(m_retention.minFree, free) : 0);
}

}  // namespace vastra
