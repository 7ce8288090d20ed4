// CFaultyFiles: a file layer for tests of what happens when files fail. While the object exists, the process
// works on its real files through it. It
//   - counts the calls;
//   - at the n-th call, of all or of one kind, fails or calls a hook of the test, which may end the process,
//     wait, or make an image of a power cut;
//   - keeps account of what was synced in a folder of the test, from which CutPower makes the folder as it
//   can
//     be after a power cut.
// Any thread may use files; hooks are called without the lock.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/files.h"
#include "vastra/platform/file_layer.h"

namespace vastra {

enum EFileCall {
  callOpen,
  callRead,
  callWrite,
  callSync,
  callTruncate,
  callClose,
  callRename,
  callRemove,
  callSyncFolder,
  callList,
  callStat,
  callLock,
  callFreeBytes,
  callAny  // all of these
};

// What happens at the nth call of a kind, counted from 1 since the layer was made.
struct CFileFault {
  EFileCall kind = callAny;
  std::uint64_t nth = 1;
  int error = 0;         // the call fails with this errno; 0: the call is made
  bool forGood = false;  // the same happens at all later calls of the kind
  std::size_t part = 0;  // a failing Write first writes so many bytes in a call of its own, which succeeds
  std::function<void()> hook = {};  // called before the call is made or fails
};

// How much of what was not synced is on the disk after a power cut.
enum EPowerCut {
  cutNothing,  // nothing: neither names nor bytes
  cutAll,      // everything
  cutEmpty,    // all names, but only synced bytes: a file that was never synced is empty
  cutTorn,  // all names and sizes; of the bytes that were not synced, none or the first half, the rest zeros
  cutReordered,  // a random part of the changes of names, so that later ones can be there without earlier
                 // ones; files end at a random place after what was synced
  cutKinds
};

class CFaultyFiles : public CFileLayer {
 public:
  // root: the folder for CutPower. What it contains now counts as synced.
  explicit CFaultyFiles(const CString& root) : m_root(Absolute(root)) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_root)) {
      if (!entry.is_regular_file()) continue;
      const std::string bytes = ReadBytes(CString(entry.path().string()));
      const auto model = m_durable[entry.path()] = std::make_shared<CModel>(CModel{bytes, bytes});
      struct stat status = {};
      if (::stat(entry.path().c_str(), &status) == 0) model->times[1] = status.st_mtim;
    }
    m_names = m_durable;
    m_pBefore = SetFileLayer(this);
  }
  ~CFaultyFiles() override { SetFileLayer(m_pBefore); }

  void Add(CFileFault fault) {
    const std::lock_guard lock(m_mutex);
    m_faults.push_back(std::move(fault));
  }
  void RemoveFaults() {
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
  }
  std::uint64_t Count(EFileCall kind = callAny) {
    const std::lock_guard lock(m_mutex);
    return m_counts[kind];
  }

  // Makes the folder into, with what root can contain after a power cut at this moment. seed selects one of
  // the cases of cutTorn and cutReordered.
  void CutPower(EPowerCut cut, const CString& into, unsigned seed = 0) {
    const std::lock_guard lock(m_mutex);
    std::mt19937 random(seed);
    CNames names = cut == cutNothing || cut == cutReordered ? m_durable : m_names;
    if (cut == cutReordered)
      for (const CChange& change : m_changes)
        if (random() % 2) Apply(change, names);
    const std::filesystem::path to(into.Std());
    std::filesystem::copy(
        m_root, to,
        std::filesystem::copy_options::recursive | std::filesystem::copy_options::directories_only);
    for (const auto& [path, file] : names) {
      const std::filesystem::path copy = to / path.lexically_relative(m_root);
      WriteBytes(CString(copy.string()), BytesAfter(cut, *file, random));
      ::utimensat(AT_FDCWD, copy.c_str(), file->times, 0);
    }
  }

  int Open(const CString& path, int flags, mode_t mode) override {
    if (Fails(callOpen)) return -1;
    const std::lock_guard lock(m_mutex);
    const int file = CFileLayer::Open(path, flags, mode);
    struct stat status = {};
    if (file < 0 || !IsInRoot(path) || ::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return file;
    std::shared_ptr<CModel>& model = m_names[Absolute(path)];
    if (!model) Change({{}, Absolute(path), model = std::make_shared<CModel>()});
    if (flags & O_TRUNC) model->bytes.clear();
    m_open[file] = model;
    return file;
  }

  ssize_t Read(int file, void* bytes, std::size_t count) override {
    return Fails(callRead) ? -1 : CFileLayer::Read(file, bytes, count);
  }
  ssize_t ReadAt(int file, void* bytes, std::size_t count, std::uint64_t place) override {
    return Fails(callRead) ? -1 : CFileLayer::ReadAt(file, bytes, count, place);
  }

  ssize_t Write(int file, const iovec* parts, int count) override {
    std::size_t part = 0;
    if (Fails(callWrite, &part) && part == 0) return -1;
    std::string all;
    for (int i = 0; i < count; ++i) all.append(static_cast<const char*>(parts[i].iov_base), parts[i].iov_len);
    if (part != 0) all.resize(std::min(part, all.size()));
    const iovec whole = {all.data(), all.size()};
    const std::lock_guard lock(m_mutex);
    const ssize_t written = CFileLayer::Write(file, &whole, 1);
    const auto open = m_open.find(file);
    if (written <= 0 || open == m_open.end()) return written;
    CModel& model = *open->second;
    const auto size = static_cast<std::size_t>(written);
    const std::size_t place = static_cast<std::size_t>(::lseek(file, 0, SEEK_CUR)) - size;
    if (model.bytes.size() < place + size) model.bytes.resize(place + size);
    model.bytes.replace(place, size, all, 0, size);
    ::clock_gettime(CLOCK_REALTIME, &model.times[1]);
    return written;
  }

  // After a Sync that has failed the bytes never reach the disk: the system has marked them as written.
  int Sync(int file) override {
    const bool fails = Fails(callSync);
    const int reason = errno;
    const std::lock_guard lock(m_mutex);
    const auto open = m_open.find(file);
    if (open != m_open.end()) {
      CModel& model = *open->second;
      model.isLost |= fails;
      if (!model.isLost) model.synced = model.bytes;
    }
    return fails ? (errno = reason, 0) : CFileLayer::Sync(file);
  }

  int Truncate(int file, std::uint64_t length) override {
    if (Fails(callTruncate)) return 0;
    const std::lock_guard lock(m_mutex);
    if (!CFileLayer::Truncate(file, length)) return 0;
    if (const auto open = m_open.find(file); open != m_open.end()) open->second->bytes.resize(length);
    return 1;
  }

  int Close(int file) override {
    const bool fails = Fails(callClose);
    const int reason = errno;
    const std::lock_guard lock(m_mutex);
    m_open.erase(file);
    const int closed = CFileLayer::Close(file);
    return fails ? (errno = reason, 0) : closed;
  }

  int Rename(const CString& from, const CString& to, bool mayReplace) override {
    if (Fails(callRename)) return 0;
    const std::lock_guard lock(m_mutex);
    if (!CFileLayer::Rename(from, to, mayReplace)) return 0;
    const auto old = m_names.find(Absolute(from));
    if (old != m_names.end()) Change({old->first, Absolute(to), old->second});
    return 1;
  }

  int Remove(const CString& path) override {
    if (Fails(callRemove)) return 0;
    const std::lock_guard lock(m_mutex);
    if (!CFileLayer::Remove(path)) return 0;
    if (m_names.count(Absolute(path))) Change({Absolute(path), {}, {}});
    return 1;
  }
  int RemoveEmptyFolder(const CString& path) override {
    return !Fails(callRemove) && CFileLayer::RemoveEmptyFolder(path);
  }

  int SyncFolder(const CString& path) override {
    if (Fails(callSyncFolder)) return 0;
    const std::lock_guard lock(m_mutex);
    const auto isSynced = [this, folder = Absolute(path)](const CChange& change) {
      const bool here = (change.to.empty() ? change.from : change.to).parent_path() == folder;
      if (here) Apply(change, m_durable);
      return here;
    };
    m_changes.erase(std::remove_if(m_changes.begin(), m_changes.end(), isSynced), m_changes.end());
    return CFileLayer::SyncFolder(path);
  }

  int ListWanted(const CString& folder, const CWanted& wanted, std::vector<CFolderEntry>& entries) override {
    return !Fails(callList) && CFileLayer::ListWanted(folder, wanted, entries);
  }
  int Stat(const CString& path, CFileStatus& status) override {
    return !Fails(callStat) && CFileLayer::Stat(path, status);
  }
  int StatOpen(int file, CFileStatus& status) override {
    return !Fails(callStat) && CFileLayer::StatOpen(file, status);
  }
  EFileLock Lock(int file) override {
    if (!Fails(callLock)) return CFileLayer::Lock(file);
    return errno == EWOULDBLOCK ? EFileLock::held : EFileLock::unsupported;
  }
  int FreeBytes(const CString& path, std::uint64_t& bytes) override {
    return !Fails(callFreeBytes) && CFileLayer::FreeBytes(path, bytes);
  }

 private:
  struct CModel {               // of a file, under whatever names
    std::string synced, bytes;  // on the disk for certain; as the process sees them
    bool isLost = false;        // a Sync has failed
    timespec times[2] = {{0, UTIME_OMIT}, {0, UTIME_OMIT}};  // for utimensat
  };
  using CNames = std::map<std::filesystem::path, std::shared_ptr<CModel>>;
  struct CChange {  // of names: a new file has no from, a removed one no to
    std::filesystem::path from, to;
    std::shared_ptr<CModel> file;
  };

  static std::filesystem::path Absolute(const CString& path) {
    std::filesystem::path clean = std::filesystem::absolute(path.Std()).lexically_normal();
    return clean.has_filename() ? clean : clean.parent_path();
  }
  bool IsInRoot(const CString& path) const {
    const std::string relative = Absolute(path).lexically_relative(m_root).string();
    return !relative.empty() && relative.compare(0, 2, "..") != 0;
  }

  static void Apply(const CChange& change, CNames& names) {
    if (!change.from.empty()) names.erase(change.from);
    if (!change.to.empty()) names[change.to] = change.file;
  }
  void Change(const CChange& change) {
    m_changes.push_back(change);
    Apply(change, m_names);
  }

  static std::string BytesAfter(EPowerCut cut, const CModel& file, std::mt19937& random) {
    if (cut == cutAll) return file.bytes;
    if (cut == cutNothing || cut == cutEmpty) return file.synced;
    // The bytes up to place are there, then the old ones, then zeros or the end of the file.
    const auto [same, end] =
        std::mismatch(file.bytes.begin(), file.bytes.end(), file.synced.begin(), file.synced.end());
    const auto rest = static_cast<std::size_t>(file.bytes.end() - same);
    const std::size_t kept = cut == cutTorn ? rest / 2 * (random() % 2) : random() % (rest + 1);
    const std::size_t place = file.bytes.size() - rest + kept;
    std::string torn = file.bytes.substr(0, place);
    if (place < file.synced.size()) torn += file.synced.substr(place);
    if (cut == cutTorn) torn.resize(std::max(torn.size(), file.bytes.size()));
    return torn;
  }

  // Counts a call and calls the hooks. Whether the call is to fail; then errno has the reason.
  bool Fails(EFileCall kind, std::size_t* part = nullptr) {
    std::vector<std::function<void()>> hooks;
    int error = 0;
    {
      const std::lock_guard lock(m_mutex);
      ++m_counts[kind], ++m_counts[callAny];
      for (CFileFault& fault : m_faults) {
        const std::uint64_t count = m_counts[fault.kind];
        if ((fault.kind != callAny && fault.kind != kind) || count < fault.nth) continue;
        if (count > fault.nth && !fault.forGood) continue;
        if (fault.hook) hooks.push_back(fault.hook);
        if (fault.error) error = fault.error;
        if (part && fault.part) *part = std::exchange(fault.part, 0), fault.nth = count + 1;
      }
    }
    for (const auto& hook : hooks) hook();
    if (error) errno = error;
    return error != 0;
  }

  const std::filesystem::path m_root;
  CFileLayer* m_pBefore;
  std::mutex m_mutex;
  std::array<std::uint64_t, callAny + 1> m_counts = {};
  std::vector<CFileFault> m_faults;
  CNames m_names, m_durable;       // as the process sees them; on the disk for certain
  std::vector<CChange> m_changes;  // of names, since the last SyncFolder of their folder
  std::map<int, std::shared_ptr<CModel>> m_open;
};

}  // namespace vastra
