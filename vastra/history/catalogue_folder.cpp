#include "vastra/history/catalogue_folder.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>

#include "vastra/history/digest_file.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::size_t kFewLogs = 16;  // for which no digest is opened
constexpr std::string_view kLogEndings[] = {".rph", ".rpd"};

bool IsLogFile(std::string_view name) {
  return std::any_of(std::begin(kLogEndings), std::end(kLogEndings),
                     [name](std::string_view ending) { return EndsIn(name, ending); });
}

bool IsNameBefore(const CFolderEntry& a, const CFolderEntry& b) { return a.name < b.name; }

}  // namespace

bool IsFresh(const CFileStatus& status, std::int64_t lookedAt) {
  constexpr std::int64_t kStep = 50'000'000;  // ns; those of Linux are 10 ms or less
  return status.lastWrite > lookedAt - kStep;
}

std::int64_t NowInNanoseconds() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

CHistoryLog FaultyLog(const CString& path, int error) {
  CHistoryLog log;
  log.path = path;
  log.fault = CString(std::generic_category().message(error));
  return log;
}

bool CCatalogueFolder::Scan(bool isRecursive, CNamesPool& pool) {
  const std::int64_t lookedAt = m_listedAt;
  bool isChanged = OpenJournals();
  if (ListLogs(isRecursive)) {
    LookAtLogs(lookedAt, pool);
    isChanged = true;
  }
  isChanged |= FollowJournals();
  if (isChanged) MakeJournalLogs(pool);
  return isChanged;
}

// Opens the journals that are new and closes those that were removed: what these had is in logs now, which
// are listed next. Returns whether there were any.
bool CCatalogueFolder::OpenJournals() {
  std::vector<CFolderEntry> entries;
  CJournalEntry entry;
  std::map<CKey, std::unique_ptr<CJournalFollower>> journals;
  bool isChanged = false;
  FileLayer().ListWanted(
      m_path, [&](std::string_view name, bool) { return ParseJournalFile(name, entry); }, entries);
  for (const CFolderEntry& file : entries) {
    if (file.status.type != EFileType::regular || !ParseJournalFile(file.name.View(), entry)) continue;
    const CKey key = {entry.key, entry.number};
    std::unique_ptr<CJournalFollower>& known = m_journals[key];
    const bool isNew = !known || known->IsOther(file.status);
    if (isNew) known = std::make_unique<CJournalFollower>(JoinPath(m_path, file.name));
    isChanged |= isNew;
    journals[key] = std::move(known);
  }
  isChanged |= journals.size() != m_journals.size();
  m_journals = std::move(journals);
  return isChanged;
}

bool CCatalogueFolder::FollowJournals() {
  bool isChanged = false;
  for (const auto& [key, journal] : m_journals) isChanged |= journal->Follow();
  return isChanged;
}

// Returns whether the logs or subfolders can be others than those of the last scan.
bool CCatalogueFolder::ListLogs(bool isRecursive) {
  std::vector<CFolderEntry> entries;
  entries.reserve(m_listed.size());
  const std::int64_t before = std::exchange(m_listedAt, NowInNanoseconds());
  const auto isWanted = [&](std::string_view name, bool mayBeFolder) {
    return IsLogFile(name) || (isRecursive && mayBeFolder);
  };
  const int error = FileLayer().ListWanted(m_path, isWanted, entries) ? 0 : errno;
  const bool isSame = error == std::exchange(m_error, error) && entries == m_listed &&
                      std::none_of(entries.begin(), entries.end(), [before](const CFolderEntry& entry) {
                        return IsFresh(entry.status, before);
                      });
  m_listed = std::move(entries);
  m_fault = FaultyLog(m_path, m_error);
  return !isSame;
}

// Looks at the logs that are new or changed, and keeps the others, which were looked at at lookedAt or later.
void CCatalogueFolder::LookAtLogs(std::int64_t lookedAt, CNamesPool& pool) {
  std::vector<CFolderEntry> entries, looked;
  for (const CFolderEntry& entry : m_listed)
    if (IsLogFile(entry.name.View()) && entry.status.type != EFileType::folder) entries.push_back(entry);
  std::sort(entries.begin(), entries.end(), IsNameBefore);
  std::vector<CHistoryLog> logs;
  logs.reserve(entries.size());
  std::size_t old = 0;
  std::unique_ptr<CDigestReader> digest;
  if (entries.size() > m_entries.size() + kFewLogs) digest = CDigestReader::Open(m_path);
  for (CFolderEntry& entry : entries) {
    while (old < m_entries.size() && m_entries[old].name < entry.name) ++old;
    const bool isKept = old < m_entries.size() && m_entries[old] == entry && !IsFresh(entry.status, lookedAt);
    int error = 0;
    logs.push_back(isKept ? std::move(m_logs[old])
                          : LookAtLog(JoinPath(m_path, entry.name), pool, &error, digest.get()));
    if (error == ENOENT)  // removed since it was listed
      logs.pop_back();
    else
      looked.push_back(std::move(entry));
  }
  m_entries = std::move(looked);
  m_logs = std::move(logs);
}

std::vector<CString> CCatalogueFolder::Subfolders() const {
  std::vector<CString> names;
  for (const CFolderEntry& entry : m_listed)
    if (entry.status.type == EFileType::folder) names.push_back(entry.name);
  std::sort(names.begin(), names.end());
  return names;
}

const CHistoryLog* CCatalogueFolder::FindLog(const CString& file) const {
  const auto at = std::lower_bound(m_entries.begin(), m_entries.end(), CFolderEntry{file, {}}, IsNameBefore);
  if (at == m_entries.end() || at->name != file) return nullptr;
  return &m_logs[static_cast<std::size_t>(at - m_entries.begin())];
}

// For each log the journal that has all its samples, and each journal that cannot be read.
std::vector<CJournalFollower*> CCatalogueFolder::BestJournals() const {
  std::vector<CJournalFollower*> journals;
  CKey log;
  CJournalFollower* best = nullptr;  // the last of journals, if it can be read
  for (const auto& [key, journal] : m_journals) {
    const bool isSameLog = best && log == CKey{key.first, key.second / kJournalsOfALog};
    if (!journal->Fault().IsEmpty()) {
      journals.insert(journals.end() - (best ? 1 : 0), journal.get());
    } else if (!isSameLog) {
      journals.push_back(best = journal.get());
      log = {key.first, key.second / kJournalsOfALog};
    } else if (best->Samples() <= journal->Samples()) {
      journals.back() = best = journal.get();
    }
  }
  return journals;
}

void CCatalogueFolder::MakeJournalLogs(CNamesPool& pool) {
  m_journalLogs.clear();
  for (CJournalFollower* journal : BestJournals()) {
    const std::optional<CString> file = journal->LogFile();
    const CHistoryLog* log = file ? FindLog(*file) : nullptr;
    const std::uint64_t skip = log ? journal->SamplesIn(*log, pool) : 0;
    if (journal->Fault().IsEmpty() ? skip < journal->Samples() : !journal->IsEmpty())
      m_journalLogs.push_back(journal->MakeLog(skip, pool));
  }
}

}  // namespace vastra
