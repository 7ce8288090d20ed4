#include "vastra/logfiles/log_lock.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "vastra/platform/file_layer.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr const char *kLockPrefix = ".vastra-", *kLockEnding = ".lock";
constexpr std::size_t kMaxNote = 65536;  // bytes

// Another process holds a lock for a moment to find out whether it is in use, and writes its note a moment
// after it has taken a lock.
constexpr int kLockTries = 10;
constexpr std::chrono::milliseconds kLockPause{20};

// Calls isDone until it is true, for as long as such a moment can last.
template <class TCall>
bool TryForAMoment(TCall isDone) {
  for (int i = 1; i < kLockTries; ++i, std::this_thread::sleep_for(kLockPause))
    if (isDone()) return true;
  return isDone();
}

// The note at the beginning of the file; none if it is torn or damaged.
std::optional<CLockNote> ReadNote(const CString& path) {
  const int handle = FileLayer().Open(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW, 0);
  if (handle < 0) return std::nullopt;
  CFile file(handle);
  std::string bytes(kMaxNote, '\0');
  try {
    bytes.resize(file.Read(bytes.data(), bytes.size()));
  } catch (const CFileException&) {
    return std::nullopt;
  }
  CLockNote note;
  return GetLockNote(bytes, note) ? std::optional(note) : std::nullopt;
}

bool IsInUse(const CString& path) {
  const int handle = FileLayer().Open(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW, 0);
  if (handle < 0) return false;
  const CFile file(handle);
  return FileLayer().Lock(handle) == EFileLock::held;
}

}  // namespace

int CLogLock::Take(const CString& key, const CLogNaming& naming, int& other,
                   const std::list<CLogLock>& held) {
  Release();
  m_naming = naming;
  m_key = key;
  m_path = JoinPath(naming.directory, kLockPrefix + key + kLockEnding);
  if (!TryForAMoment([this] { return OpenLocked(); })) {
    const std::optional<CLockNote> note = ReadNote(m_path);
    return other = note ? note->pid : 0, 0;
  }
  const std::optional<CLockNote> before = ReadNote(m_path);
  m_unfinished = before ? before->unfinished : std::nullopt;
  m_wasCutOff = before ? before->pid != 0 : m_status.size > 0;  // a power cut can tear the note
  try {
    // A text copy that is missing after a power cut is told from one that was removed by the note alone.
    const bool isDurable = naming.saveRp && naming.saveCsv;
    WriteNote(::getpid(), isDurable);
    if (isDurable) FileLayer().SyncFolder(naming.Folder());
  } catch (const CFileException&) {  // the disk is full: the lock holds without the note
  }
  if (!FindOther(other, held)) return 1;
  Leave(before ? before->pid : 0);
  return 0;
}

void CLogLock::TakeOver(CLogLock& other) {
  Release();
  m_file = std::move(other.m_file);
  m_status = other.m_status;
  m_key = other.m_key;
  m_path = other.m_path;
  m_naming = other.m_naming;
  m_unfinished = std::exchange(other.m_unfinished, std::nullopt);
  m_wasCutOff = false;
}

// Unlocks with a note that process was the last owner, 0: the owner has released it.
void CLogLock::Leave(int process) {
  if (IsTaken()) try {
      WriteNote(process, false);
    } catch (const CFileException&) {  // the next owner takes this one for cut off
    }
  m_file.reset();
  m_unfinished.reset();
}

int CLogLock::Renew(int& other) {
  CFileStatus present;
  if (!IsTaken()) return 1;
  const bool isThere = FileLayer().Stat(m_path, present);
  if (isThere ? IsOwn(present) : errno != ENOENT) return 1;
  CLogLock renewed;
  if (!renewed.Take(m_key, m_naming, other)) return 0;
  m_file = std::move(renewed.m_file);
  m_status = renewed.m_status;
  return 1;
}

void CLogLock::SetUnfinished(const std::optional<CUnfinishedLog>& log) {
  if (!IsTaken()) return;
  m_unfinished = log;
  WriteNote(::getpid(), true);
}

// Returns false if another process has the lock.
bool CLogLock::OpenLocked() {
  const int handle = FileLayer().Open(m_path, O_RDWR | O_CREAT | O_NONBLOCK | O_NOFOLLOW, 0666);
  if (handle < 0) throw CFileException(m_path, errno);
  m_file = std::make_unique<CFile>(handle);
  if (!FileLayer().StatOpen(handle, m_status) || m_status.type != EFileType::regular) {
    m_file.reset();
    throw CFileException(m_path, EEXIST);
  }
  if (FileLayer().Lock(handle) == EFileLock::held) m_file.reset();
  return IsTaken();
}

bool CLogLock::IsOwn(const CFileStatus& file) const {
  return file.inode == m_status.inode && file.device == m_status.device;
}

// Overwrites the note in place, which needs no space on the disk: its length says where it ends. No effect if
// the folder was replaced and another lock has the name.
void CLogLock::WriteNote(int process, bool isDurable) const {
  std::string bytes;
  CFileStatus present;
  if (FileLayer().Stat(m_path, present) && !IsOwn(present)) return;
  PutLockNote(bytes, {static_cast<std::int32_t>(process), m_naming, m_unfinished});
  CFile file(m_path, CFile::modeWrite);
  file.Write(bytes.data(), bytes.size());
  if (isDurable) file.Sync();
  file.Close();
}

// Whether a lock of another key is in use, with a naming that can have the same names. A lock without a note
// does not count: its process has not written it because the disk is full.
bool CLogLock::FindOther(int& other, const std::list<CLogLock>& held) const {
  const auto isHeld = [&held](const CString& path) {
    return std::any_of(held.begin(), held.end(), [&](const CLogLock& lock) { return lock.m_path == path; });
  };
  std::vector<CFolderEntry> entries;
  if (!FileLayer().List(m_naming.Folder(), kLockEnding, entries))
    throw CFileException(m_naming.Folder(), errno);
  for (const CFolderEntry& entry : entries) {
    const CString path = JoinPath(m_naming.directory, entry.name);
    const bool isLock = entry.status.type == EFileType::regular && entry.name.Find(kLockPrefix) == 0;
    if (!isLock || path == m_path || isHeld(path) || !IsInUse(path)) continue;
    std::optional<CLockNote> note;
    TryForAMoment([&] { return (note = ReadNote(path)).has_value(); });
    if (note && CanNamesMeet(note->naming, m_naming)) return other = note->pid, true;
  }
  return false;
}

}  // namespace vastra
