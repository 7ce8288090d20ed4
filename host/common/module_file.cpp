#include "host/common/module_file.h"

#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include "host/common/descriptor.h"
#include "host/common/paths.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

using CElfHeader = ElfW(Ehdr);
using CElfSegment = ElfW(Phdr);

CString Number(std::uint64_t number) { return CString(std::to_string(number)); }

bool IsWritableByAll(mode_t mode) { return (mode & S_IWOTH) != 0; }

CString FindWriterFault(const CString& folder) {
  struct stat status;
  if (::stat(folder, &status) != 0) return std::strerror(errno);
  return IsWritableByAll(status.st_mode) ? "all users can write to its folder " + folder : CString();
}

// The folder of the file itself, if the file was reached by a link.
CString RealFolder(int file) {
  char path[PATH_MAX];
  const ssize_t length = ::readlink(LoadPathOf(file), path, sizeof path);
  return length > 0 ? DirectoryOf(CString(path, static_cast<std::size_t>(length))) : CString();
}

CString FindOwnerFault(int file, const struct stat& status, const CString& folder) {
  const uid_t caller = ::geteuid();
  if (status.st_uid != 0 && status.st_uid != caller)
    return "it belongs to user " + Number(status.st_uid) + ", and neither to root nor to user " +
           Number(caller) + ", who runs this program";
  if (IsWritableByAll(status.st_mode)) return "all users can write to it";
  const CString fault = FindWriterFault(folder);
  return fault.IsEmpty() ? FindWriterFault(RealFolder(file)) : fault;
}

template <class T>
bool ReadAt(int file, std::uint64_t offset, T& record) {
  return ::pread(file, &record, sizeof record, static_cast<off_t>(offset)) == ssize_t{sizeof record};
}

// Reads the header of the running program.
bool ReadOwnHeader(CElfHeader& header) {
  const CDescriptor file(::open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
  return file.Get() >= 0 && ReadAt(file.Get(), 0, header);
}

CString FindKindFault(const CElfHeader& header) {
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return "it is not a module: it has no ELF header";
  CElfHeader own = {};
  if (!ReadOwnHeader(own)) return std::strerror(errno);
  if (header.e_ident[EI_CLASS] != own.e_ident[EI_CLASS] || header.e_ident[EI_DATA] != own.e_ident[EI_DATA] ||
      header.e_machine != own.e_machine)
    return "it is for another machine";
  if (header.e_type != ET_DYN) return "it is not a shared library";
  return header.e_phentsize == sizeof(CElfSegment) ? CString() : CString("its ELF header is damaged");
}

// The end of a part of the file; the highest number if there is none.
std::uint64_t EndOf(std::uint64_t offset, std::uint64_t size) {
  std::uint64_t end = 0;
  return __builtin_add_overflow(offset, size, &end) ? UINT64_MAX : end;
}

// How many bytes the file must have for what its headers name.
std::uint64_t NeededSize(int file, const CElfHeader& header) {
  std::uint64_t needed = EndOf(header.e_phoff, std::uint64_t{header.e_phnum} * header.e_phentsize);
  needed = std::max(needed, EndOf(header.e_shoff, std::uint64_t{header.e_shnum} * header.e_shentsize));
  for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
    CElfSegment segment = {};
    if (!ReadAt(file, header.e_phoff + i * sizeof segment, segment)) break;  // after the end of the file
    needed = std::max(needed, EndOf(segment.p_offset, segment.p_filesz));
  }
  return needed;
}

CString FindImageFault(int file, std::uint64_t size) {
  CElfHeader header = {};
  const bool isWhole = ReadAt(file, 0, header);
  if (!isWhole && size >= sizeof header) return std::strerror(errno);
  CString fault = isWhole ? FindKindFault(header) : CString("it is not a module: it has no ELF header");
  if (!fault.IsEmpty()) return fault;
  const std::uint64_t needed = NeededSize(file, header);
  if (needed <= size) return CString();
  return "it is cut short: it has " + Number(size) + " bytes, and its headers name " + Number(needed);
}

// Opens what is at a path without using it: no FIFO, and no device.
class CPlace {
 public:
  explicit CPlace(const CString& path) : m_path(path), m_file(::open(path, O_PATH | O_CLOEXEC)) {
    m_isKnown = m_file.Get() >= 0 && ::fstat(m_file.Get(), &m_status) == 0;
    m_error = errno;
  }
  int Get() const { return m_file.Get(); }
  const struct stat& Status() const { return m_status; }

  CString FindKind() const {
    if (!m_isKnown) return std::strerror(m_error);
    return S_ISREG(m_status.st_mode) ? CString() : "it is " + OtherThanFile(m_path);
  }
  CString FindImage() const {
    const CDescriptor file(::open(LoadPathOf(m_file.Get()), O_RDONLY | O_CLOEXEC));
    if (file.Get() < 0) return std::strerror(errno);
    return FindImageFault(file.Get(), static_cast<std::uint64_t>(m_status.st_size));
  }

 private:
  const CString m_path;
  const CDescriptor m_file;
  bool m_isKnown;
  int m_error;
  struct stat m_status;
};

}  // namespace

CString LoadPathOf(int descriptor) {
  return "/proc/self/fd/" + Number(static_cast<std::uint64_t>(descriptor));
}

CString FindModuleFault(const CString& path) {
  const CPlace place(path);
  const CString fault = place.FindKind();
  return fault.IsEmpty() ? place.FindImage() : fault;
}

int OpenModuleFile(const CString& folder, const CString& fileName, CString& reason) {
  const CPlace place(JoinPath(folder, fileName));
  reason = place.FindKind();
  if (reason.IsEmpty()) reason = FindOwnerFault(place.Get(), place.Status(), folder);
  if (reason.IsEmpty()) reason = place.FindImage();
  if (!reason.IsEmpty()) return -1;
  const int kept = ::fcntl(place.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (kept < 0) reason = std::strerror(errno);
  return kept;
}

}  // namespace vastra
