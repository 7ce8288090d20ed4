#include "vastra/history/catalogue.h"

#include <cerrno>
#include <cstdlib>
#include <set>

#include "vastra/history/catalogue_folder.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

// The path without links, or as it is if it leads nowhere.
CString RealPath(const CString& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path, nullptr), std::free);
  return real ? CString(real.get()) : path;
}

CString FileOf(const CString& path) { return path.Mid(path.ReverseFind('/') + 1); }

// Identifies a file, which may be a link itself.
CString KeyOf(const CString& path) { return JoinPath(RealPath(DirectoryOf(path)), FileOf(path)); }

// Whether the file at path is a journal, or has the name of one and cannot be read.
bool IsNamedJournal(const CString& path) {
  CProbedFile file(path);
  std::uint32_t magic = 0;
  CJournalEntry entry;
  if (file.Get(magic)) return magic == CJournalStart::kMagic;
  return ParseJournalFile(FileOf(path).View(), entry);
}

}  // namespace

// A file that was named.
struct CCatalogue::CNamedFile {
  CHistoryLog log;
  CFileStatus status;
  std::int64_t lookedAt = 0;                  // nanoseconds since 1970
  std::unique_ptr<CJournalFollower> journal;  // null for a log
};

// What a scan finds.
struct CCatalogue::CFound {
  struct CJournal {
    CString key;
    CNamedFile* file;
    std::size_t before;  // how many logs are before it
  };

  std::vector<const CHistoryLog*> logs;  // in the order of the paths
  std::set<CString> folders, files;      // the keys of those that were looked at
  std::vector<CJournal> journals;        // those that were named
  bool isChanged = false;
};

CCatalogue::CCatalogue() : m_pPool(std::make_unique<CNamesPool>()) {}
CCatalogue::~CCatalogue() = default;

void CCatalogue::Add(const CString& path, bool isRecursive) { m_paths.push_back({path, isRecursive}); }

bool CCatalogue::Scan() {
  CFound found;
  for (const CPath& path : m_paths) {
    CFileStatus status;
    if (FileLayer().Stat(path.path, status) && status.type == EFileType::folder)
      ScanFolders(path, found);
    else
      ScanFile(path.path, found);
  }
  ScanJournals(found);
  if (!found.isChanged && found.logs == m_found) return false;
  m_logs.clear();
  m_logs.reserve(found.logs.size());
  for (const CHistoryLog* log : found.logs) m_logs.push_back(*log);
  m_found = std::move(found.logs);
  return true;
}

// The folder and with isRecursive its subfolders, each after the logs of the folder that it is in.
void CCatalogue::ScanFolders(const CPath& top, CFound& found) {
  std::vector<std::pair<CString, CString>> left = {{top.path, RealPath(top.path)}};
  while (!left.empty()) {
    const auto [path, key] = left.back();
    left.pop_back();
    if (!found.folders.insert(key).second) continue;
    std::unique_ptr<CCatalogueFolder>& folder = m_folders[key];
    if (!folder) folder = std::make_unique<CCatalogueFolder>(path, key);
    ScanFolder(*folder, top.isRecursive, found);
    const std::vector<CString> below = top.isRecursive ? folder->Subfolders() : std::vector<CString>();
    for (auto name = below.rbegin(); name != below.rend(); ++name)
      left.emplace_back(JoinPath(path, *name), JoinPath(key, *name));
  }
}

void CCatalogue::ScanFolder(CCatalogueFolder& folder, bool isRecursive, CFound& found) {
  found.isChanged |= folder.Scan(isRecursive, *m_pPool);
  if (folder.Error() && folder.Error() != ENOENT) found.logs.push_back(&folder.Fault());  // not if removed
  for (const CHistoryLog& log : folder.Logs())
    if (found.files.empty() || !found.files.contains(JoinPath(folder.Key(), FileOf(log.path))))
      found.logs.push_back(&log);
  for (const CHistoryLog& log : folder.Journals()) found.logs.push_back(&log);
}

void CCatalogue::ScanFile(const CString& path, CFound& found) {
  const CString key = KeyOf(path);
  const auto folder = m_folders.find(DirectoryOf(key));
  const bool isInFolder = found.folders.contains(DirectoryOf(key)) && folder->second->FindLog(FileOf(path));
  if (isInFolder || !found.files.insert(key).second) return;
  std::unique_ptr<CNamedFile>& file = m_files[path];
  if (!file) file = std::make_unique<CNamedFile>();
  if (!file->journal && IsNamedJournal(path)) file->journal = std::make_unique<CJournalFollower>(path);
  if (file->journal) return found.journals.push_back({key, file.get(), found.logs.size()});
  CFileStatus status;
  const int error = FileLayer().Stat(path, status) ? 0 : errno;
  if (error || file->status != status || IsFresh(status, file->lookedAt)) {
    file->lookedAt = NowInNanoseconds();
    file->status = status;
    file->log = error ? FaultyLog(path, error) : LookAtLog(path, *m_pPool);
    found.isChanged = true;
  }
  found.logs.push_back(&file->log);
}

// The journals that were named, without the samples that a log of the catalogue has. Those in a folder of the
// catalogue are a part of it.
void CCatalogue::ScanJournals(CFound& found) {
  std::map<CString, const CHistoryLog*> logs;
  for (const CHistoryLog* log : found.journals.empty() ? std::vector<const CHistoryLog*>() : found.logs)
    logs.emplace(KeyOf(log->path), log);
  for (auto journal = found.journals.rbegin(); journal != found.journals.rend(); ++journal) {
    CJournalFollower& follower = *journal->file->journal;
    const CString folder = DirectoryOf(journal->key);
    if (found.folders.contains(folder)) continue;
    follower.Follow();
    const std::optional<CString> file = follower.LogFile();
    const auto log = file ? logs.find(JoinPath(folder, *file)) : logs.end();
    const std::uint64_t skip = log == logs.end() ? 0 : follower.SamplesIn(*log->second, *m_pPool);
    journal->file->log = follower.MakeLog(skip, *m_pPool);
    found.isChanged = true;
    const auto at = found.logs.begin() + static_cast<std::ptrdiff_t>(journal->before);
    found.logs.insert(at, &journal->file->log);
  }
}

}  // namespace vastra
