#include "vastra/logfiles/log_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <optional>
#include <string>

#include "vastra/logfiles/log_name.h"
#include "vastra/platform/file_layer.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr int kTemporaryNames = 9;      // for one file: FILE.part, FILE.2.part, ...
constexpr int kNamesToTry = 1'000'000;  // that are in use although the folder did not list them
constexpr std::uint64_t kLastOfHour = 99;

CString TemporaryName(const CString& file, int number) {
  return file + (number == 1 ? "" : "." + std::to_string(number)).c_str() + CReplaceFile::kSuffix;
}

// Removes what has the name of a temporary file, unless a process is writing it (0 with EWOULDBLOCK). Returns
// 1 also if nothing has the name. Does not wait for a pipe and does not follow a link.
int RemoveLeftover(const CString& path) {
  CFileLayer& files = FileLayer();
  const int file = files.Open(path, O_WRONLY | O_NONBLOCK | O_NOFOLLOW, 0);
  if (file < 0) switch (errno) {
      case ENOENT:
        return 1;
      case EISDIR:
        return files.RemoveEmptyFolder(path);
      case ENXIO:  // a pipe or a socket
      case ELOOP:  // a link
        return files.Remove(path);
      default:
        return 0;
    }
  const bool isHeld = files.Lock(file) == EFileLock::held;
  const int removed = !isHeld && files.Remove(path);
  const int reason = isHeld ? EWOULDBLOCK : errno;
  files.Close(file);
  errno = reason;
  return removed;
}

// A temporary file beside target, locked against RemoveLeftover. It is removed unless it is renamed.
class CPartFile : public CFile {
 public:
  explicit CPartFile(const CString& target) {
    for (int i = 1; i <= kTemporaryNames && !IsOpen(); ++i) Create(TemporaryName(target, i));
    if (!IsOpen()) Fail();
    FileLayer().Lock(m_handle);  // may fail: some network file systems have no locks
  }
  CPartFile(const CPartFile&) = delete;
  CPartFile& operator=(const CPartFile&) = delete;
  ~CPartFile() override {
    if (!m_isRenamed) FileLayer().Remove(m_path);
  }

  // Returns 0 if target exists and must not be replaced.
  int RenameTo(const CString& target, bool replaces) {
    const CFile lock(::dup(m_handle));  // keeps the lock until the file has its name
    Close();
    m_isRenamed = FileLayer().Rename(m_path, target, replaces);
    if (!m_isRenamed && (replaces || errno != EEXIST)) throw CFileException(target, errno);
    return m_isRenamed;
  }

 private:
  void Create(const CString& path) {
    constexpr UINT kNew = modeWrite | modeCreate | modeNew;
    if (Open(path, kNew)) return;
    if (errno != EEXIST) Fail();
    if (RemoveLeftover(path)) Open(path, kNew);
  }

  bool m_isRenamed = false;
};

// Whether the name, which ends in the suffix of temporary files, belongs to a log of naming.
bool IsOwnTemporary(const CLogNaming& naming, const CString& name) {
  for (int i = 1; i <= kTemporaryNames; ++i) {
    const CString suffix = TemporaryName("", i), file = name.Left(name.GetLength() - suffix.GetLength());
    if (name == file + suffix && naming.IsOwnFile(file)) return true;
  }
  return false;
}

// The base of a name and its number, from 0: by time the hour and 00, 01, ..., 99, 99~2, ...; by a variable
// the value and nothing, ~2, ~3, ...
CString BaseName(const CLogNaming& naming, const CSampleRecord& first, const CStringArray& names) {
  if (naming.ByTime()) return naming.prefix + HourName(CTime(first.m_time.time));
  return CreateFileNameFromVar(naming.nameVariable, names, first, naming.dwordName, naming.prefix);
}

CString NumberedName(const CLogNaming& naming, const CString& base, std::uint64_t number) {
  if (!naming.ByTime()) return number == 0 ? base : base + "~" + std::to_string(number + 1).c_str();
  CString name;
  if (number <= kLastOfHour)
    name.Format("%02d", static_cast<int>(number));
  else
    name = CString("99~") + std::to_string(number - kLastOfHour + 1).c_str();
  return base + name;
}

// The number of an own name; none if its base is another one or the number is too large to be continued.
std::optional<std::uint64_t> NumberOfName(const CLogNaming& naming, const CString& base,
                                          const CString& name) {
  constexpr std::size_t kMaxDigits = 18;
  std::string_view rest = name.View();
  if (!rest.starts_with(base.View())) return std::nullopt;
  rest.remove_prefix(base.View().size());
  std::uint64_t ofHour = 0, repeat = 1;
  if (naming.ByTime()) {
    std::from_chars(rest.data(), rest.data() + 2, ofHour);
    rest.remove_prefix(2);
  }
  if (!rest.empty() && (rest[0] != '~' || rest.size() > 1 + kMaxDigits)) return std::nullopt;
  if (!rest.empty()) std::from_chars(rest.data() + 1, rest.data() + rest.size(), repeat);
  return naming.ByTime() && ofHour < kLastOfHour ? ofHour : ofHour + repeat - 1;
}

}  // namespace

std::vector<CString> CLogFolder::RemoveLeftovers() const {
  std::vector<CString> faults;
  std::vector<CFolderEntry> entries;
  const auto fail = [&faults](const CString& path, const char* what) {
    faults.push_back(path + what + CFileException(path, errno).Text());
  };
  if (!FileLayer().List(m_naming.Folder(), CReplaceFile::kSuffix, entries))
    fail(m_naming.Folder(), ": the folder cannot be listed: ");
  for (const CFolderEntry& entry : entries) {
    const CString path = JoinPath(m_naming.directory, entry.name);
    if (IsOwnTemporary(m_naming, entry.name) && !RemoveLeftover(path) && errno != EWOULDBLOCK)
      fail(path, ": this temporary file of an earlier run cannot be removed: ");
  }
  return faults;
}

CString CLogFolder::NextName(const CSampleRecord& first, const CStringArray& names) {
  UseBase(BaseName(m_naming, first, names));
  for (int i = 0; i < kNamesToTry; ++i, ++m_number) {
    m_nextName = NumberedName(m_naming, m_base, m_number);
    if (IsFree(m_nextName)) return m_nextName;
  }
  throw CFileException(PathOf(m_nextName, ELogForm::binary), EEXIST);
}

// Continues with the number after the highest one of base in the folder, in either form.
void CLogFolder::UseBase(const CString& base) {
  if (base == m_base && m_isListed) return;
  m_base = base;
  m_number = 0;
  std::vector<CFolderEntry> entries;
  m_isListed = FileLayer().List(m_naming.Folder(), "", entries);
  for (const CFolderEntry& entry : entries)
    if (const auto log = m_naming.IsOwnFile(entry.name))
      if (const auto number = NumberOfName(m_naming, base, log->name); number && *number >= m_number)
        m_number = *number + 1;
}

bool CLogFolder::IsFree(const CString& name) const {
  for (const ELogForm form : kLogForms) {
    CFileStatus status;
    const CString path = PathOf(name, form);
    if (!m_unsynced.count(path) && FileLayer().Stat(path, status)) return false;
  }
  return true;
}

// The name is not free again, even if its file is removed.
void CLogFolder::NameIsUsed(const CString& name) {
  if (!(name == m_nextName)) return;
  ++m_number;
  m_nextName.Empty();
}

bool CLogFolder::Save(const CString& name, ELogForm form, bool replaces,
                      const std::function<void(CFile&)>& write, const std::function<void()>& beforeRename) {
  m_rotation.Saving(name);
  const CString path = PathOf(name, form);
  CPartFile file(path);
  write(file);
  file.Sync();
  if (beforeRename) beforeRename();
  const bool hasName = file.RenameTo(path, replaces || m_unsynced.count(path));
  if (hasName && !FileLayer().SyncFolder(DirectoryOf(path))) {
    const int reason = errno;
    if (!replaces) m_unsynced.insert(path);
    throw CFileException(DirectoryOf(path), reason);
  }
  m_unsynced.erase(path);
  NameIsUsed(name);
  return hasName;
}

}  // namespace vastra
