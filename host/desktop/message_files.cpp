#include "host/desktop/message_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>

#include "host/common/shown_text.h"
#include "vastra/logfiles/stable_hash.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr char kTitleMark = '#';
constexpr int kOwnerFolder = 0700, kOwnerFile = 0600;

CString StateFolder() {
  const CString state = std::getenv("XDG_STATE_HOME");
  if (!state.IsEmpty() && state[0] == '/') return state + "/vastra/desktop";
  const CString home = std::getenv("HOME");
  return home.IsEmpty() ? CString() : home + "/.local/state/vastra/desktop";
}

CString FaultAt(const CString& path, int reason) { return path + ": " + std::strerror(reason); }

// Makes the folders that are missing. What cannot be made is reported when the file is opened.
void MakeFolders(const CString& folder) {
  for (int end = folder.Find('/', 1); end >= 0; end = folder.Find('/', end + 1))
    ::mkdir(folder.Left(end), kOwnerFolder);
  ::mkdir(folder, kOwnerFolder);
}

// A regular file that is open, or why it is not. The lock is that of one writer.
class CStateFile {
 public:
  CStateFile(const CString& path, int flags) : m_path(path) {
    m_file = ::open(path, flags | O_CLOEXEC | O_NONBLOCK, kOwnerFile);
    if (m_file < 0 || ::fstat(m_file, &m_facts) != 0)
      m_fault = FaultAt(path, errno);
    else if (!S_ISREG(m_facts.st_mode))
      m_fault = path + ": not a regular file";
  }
  CStateFile(const CStateFile&) = delete;
  CStateFile& operator=(const CStateFile&) = delete;
  ~CStateFile() {
    if (m_file >= 0) ::close(m_file);
  }

  const CString& Fault() const { return m_fault; }
  std::size_t Size() const { return static_cast<std::size_t>(m_facts.st_size); }

  // Waits for the other writer. False: it has moved this file away meanwhile.
  bool Lock() {
    struct stat now {};
    return ::flock(m_file, LOCK_EX) == 0 && ::fstat(m_file, &m_facts) == 0 && ::stat(m_path, &now) == 0 &&
           now.st_ino == m_facts.st_ino && now.st_dev == m_facts.st_dev;
  }
  // The bytes from start on.
  std::string Read(std::size_t start) const {
    std::string bytes(Size() - std::min(start, Size()), '\0');
    std::size_t size = 0;
    for (ssize_t more = 1; more > 0 && size < bytes.size();
         size += static_cast<std::size_t>(std::max<ssize_t>(more, 0)))
      more = ::pread(m_file, bytes.data() + size, bytes.size() - size, static_cast<off_t>(start + size));
    bytes.resize(size);
    return bytes;
  }
  // All bytes or none: what a full disk has accepted of them is removed again.
  CString Append(const std::string& bytes) {
    std::size_t size = 0;
    while (size < bytes.size()) {
      const ssize_t more = ::write(m_file, bytes.data() + size, bytes.size() - size);
      if (more <= 0) break;
      size += static_cast<std::size_t>(more);
    }
    if (size == bytes.size()) return {};
    const int reason = errno;
    if (size > 0 && ::ftruncate(m_file, m_facts.st_size) != 0) return FaultAt(m_path, errno);
    return FaultAt(m_path, reason);
  }

 private:
  const CString m_path;
  int m_file;
  struct stat m_facts {};
  CString m_fault;
};

// The newest lines of both files, within a bound.
class CLineTail {
 public:
  explicit CLineTail(std::size_t mostLines) : m_mostLines(mostLines) {}

  void AddFile(const CString& path, std::size_t mostBytes) {
    const CStateFile file(path, O_RDONLY);
    if (!file.Fault().IsEmpty()) return;
    const std::size_t start = file.Size() - std::min(file.Size(), 2 * mostBytes);
    std::string bytes = file.Read(start);
    if (start > 0) bytes.erase(0, bytes.find('\n'));
    for (std::string_view rest = bytes; !rest.empty();) {
      const std::size_t end = std::min(rest.find('\n'), rest.size());
      Add(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }

  CMessageFiles::CStored Stored() && {
    return {{std::make_move_iterator(m_lines.begin()), std::make_move_iterator(m_lines.end())}, m_bad};
  }

 private:
  void Add(std::string_view bytes) {
    CLoggedMessage line;
    if (bytes.empty() || bytes[0] == kTitleMark) return;
    if (!ReadFileForm(bytes, line)) return void(++m_bad);
    if (!m_lines.empty() && IsRepeat(m_lines.back(), line)) return Fold(m_lines.back(), line);
    m_lines.push_back(std::move(line));
    if (m_lines.size() > m_mostLines) m_lines.pop_front();
  }

  const std::size_t m_mostLines;
  std::deque<CLoggedMessage> m_lines;
  std::size_t m_bad = 0;
};

}  // namespace

CMessageFiles::CMessageFiles(const CString& configuration, std::size_t mostBytes)
    : m_title(kTitleMark + (" " + OneLine(configuration.Std()) + '\n')), m_mostBytes(mostBytes) {
  const CString folder = StateFolder();
  CStableHash hash;
  hash.Add(configuration.View());
  if (!folder.IsEmpty()) m_path = folder + "/" + hash.Text() + ".messages";
}

CMessageFiles::CStored CMessageFiles::Read(std::size_t mostLines) const {
  CLineTail tail(mostLines);
  if (m_path.IsEmpty()) return {};
  for (const CString& path : {OlderPath(), m_path}) tail.AddFile(path, m_mostBytes);
  return std::move(tail).Stored();
}

CString CMessageFiles::Append(std::string_view lines) {
  constexpr int kTries = 50;  // of another writer that moves the file away, or this one
  if (m_path.IsEmpty()) return "HOME and XDG_STATE_HOME are not set";
  MakeFolders(DirectoryOf(m_path));
  for (int i = 0; i < kTries; ++i) {
    CStateFile file(m_path, O_RDWR | O_APPEND | O_CREAT);
    if (!file.Fault().IsEmpty()) return file.Fault();
    if (!file.Lock()) continue;
    std::string bytes = file.Size() == 0 ? m_title : std::string();
    if (bytes.empty() && file.Read(file.Size() - 1) != "\n") bytes = "\n";  // after a torn line
    bytes += lines;
    if (file.Size() == 0 || file.Size() + bytes.size() <= m_mostBytes) return file.Append(bytes);
    if (::rename(m_path, OlderPath()) != 0) return FaultAt(m_path, errno);
  }
  return m_path + ": other programs use the file";
}

}  // namespace vastra
