#include "host/fleet/ship_files.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <random>

#include "host/common/descriptor.h"
#include "host/fleet/chunk.h"
#include "host/fleet/file_version.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/logfiles/probed_file.h"
#include "vastra/logfiles/whole_log.h"

namespace vastra {
namespace {

constexpr std::size_t kEntries = 2000, kRows = 2000, kMostUnsettled = 10000, kMostAbsent = 100000;
constexpr std::chrono::seconds kSettled{3}, kLongestChange{10}, kRoundPause{2}, kUnsettledTurn{1};
constexpr int kShareOfTime = 20;  // a round takes at most this part of the time

ELogForm FormOf(std::string_view key) {
  return key.ends_with(".csv") || key.ends_with(".CSV") ? ELogForm::text : ELogForm::binary;
}

std::uint64_t NumberOf(std::string_view bytes) {
  const CVersion digest = VersionOf(bytes);
  std::uint64_t number = 0;
  std::memcpy(&number, digest.data(), sizeof number);
  return number;
}

// What stays the same while a log grows, and differs in other logs: its first time. 0 for what is not a log.
std::uint64_t BeginOf(const std::string& path, ELogForm form) {
  constexpr std::uint64_t kMostHead = std::uint64_t{64} << 10;
  constexpr std::string_view kTime = "TimeStamp,";  // the first column
  std::int32_t time = 0;
  if (form == ELogForm::binary)
    return ReadFirstTime(path.c_str(), time) == ELogKind::log ? static_cast<std::uint32_t>(time) : 0;
  CProbedFile file(path.c_str(), O_NOFOLLOW);
  std::string head(std::min(file.Size(), kMostHead), '\0');
  if (!file.Read(head.data(), head.size(), 0) || !head.starts_with(kTime)) return 0;
  const std::size_t row = head.find('\n'), end = head.find(',', std::min(row, head.size()));
  return end == std::string::npos ? 0 : NumberOf(std::string_view(head).substr(row, end - row));
}

// Two keys with one id would cost a round of patience with one of them.
std::size_t IdOf(std::string_view key) { return std::hash<std::string_view>()(key); }

// Of 53 bits, which any reader of JSON takes.
std::uint64_t NewLogNumber() {
  constexpr int kDropped = 11, kHalf = 32;
  static std::random_device random;
  return (std::uint64_t{random()} << kHalf | random()) >> kDropped;
}

// Whether the file has not changed for some time, by this machine's clock.
bool IsQuiet(const struct stat& status) {
  using namespace std::chrono;
  const auto changed = seconds(status.st_ctim.tv_sec) + nanoseconds(status.st_ctim.tv_nsec);
  return system_clock::now().time_since_epoch() - changed >= kSettled;
}

// Removes the file at path if it is still this one, also if another takes its name meanwhile: it is renamed
// first, and gets its name back if it is another. False with the reason in errno: ENOENT, or ESTALE for
// another one.
bool RemoveSame(const std::string& path, const CFileMark& mark) {
  const std::size_t name = path.rfind('/') + 1;
  const std::string aside = path.substr(0, name) + CLogFinder::AsideName(path.substr(name));
  struct stat status = {};
  if (::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) != 0) return false;
  if (::lstat(aside.c_str(), &status) == 0 && MarkOf(status) == mark) return ::unlink(aside.c_str()) == 0;
  ::renameat2(AT_FDCWD, aside.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
  errno = ESTALE;
  return false;
}

}  // namespace

void CShipFiles::Work(Time now) {
  m_finder.StepNew(
      kEntries, [&](const std::string& key, const struct stat& status) { Consider(key, status, true, now); });
  CheckUnsettled(now);
  if (now >= m_due) Step(now);
  // The numbers of new logs are stored before their bytes are with the servers.
  if (std::exchange(m_hasNew, false)) m_state.Commit();
}

void CShipFiles::Step(Time now) {
  const bool isEnd = m_phase == EPhase::walk ? Walk(now) : CheckRows();
  m_worked += std::chrono::steady_clock::now() - now;
  if (!isEnd) return;
  if (m_phase == EPhase::rows && m_isWalked) EndRound(now);
  m_phase = m_phase == EPhase::walk ? EPhase::rows : EPhase::walk;
}

bool CShipFiles::Walk(Time now) {
  const auto found = [&](const std::string& key, const struct stat& status) {
    Consider(key, status, m_isWalked, now);
  };
  if (!m_finder.Step(kEntries, found)) return false;
  m_isWalked = true;
  m_isComplete = !std::exchange(m_isLeftOut, false);
  return true;
}

bool CShipFiles::IsComplete(Time now) const {
  return m_isComplete && std::none_of(m_unsettled.begin(), m_unsettled.end(), [&](const auto& one) {
           return now - one.second.first < kLongestChange;
         });
}

void CShipFiles::Hint(const std::string& path, Time now) {
  const std::string key = m_finder.KeyOf(path);
  struct stat status = {};
  if (key.empty() || !m_finder.IsLog(path.substr(path.rfind('/') + 1))) return;
  if (::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) Consider(key, status, true, now);
}

void CShipFiles::CheckUnsettled(Time now) {
  if (now < m_unsettledDue) return;
  std::vector<std::string> keys;
  for (const auto& [key, seen] : m_unsettled) keys.push_back(key);
  for (const std::string& key : keys) {
    struct stat status = {};
    if (::lstat(m_finder.PathOf(key).c_str(), &status) == 0 && S_ISREG(status.st_mode))
      Consider(key, status, false, now);
    else
      m_unsettled.erase(key);
  }
  const auto worked = std::chrono::steady_clock::now() - now;
  m_unsettledDue = now + std::max<std::chrono::steady_clock::duration>(kUnsettledTurn, worked * kShareOfTime);
}

void CShipFiles::Consider(const std::string& key, const struct stat& status, bool isLive, Time now) {
  const CFileMark mark = MarkOf(status);
  std::optional<CShipFile> row = m_state.Find(key);
  if (row && row->mark == mark) {
    m_unsettled.erase(key);
    return;
  }
  if (mark.size > kLargestFile) {
    m_log.Tell(m_finder.PathOf(key) + ": is larger than 64 GiB, left out");
    return;
  }
  if (!IsSettled(key, status, isLive, now)) return;
  if (const auto seen = m_unsettled.find(key); seen != m_unsettled.end()) {
    isLive = seen->second.isLive;
    m_unsettled.erase(seen);
  }
  Admit(key, mark, row, isLive);
}

// A whole log is complete at once. Another file is, once it has not changed for some time: it may be a copy
// that is being made. The time of its last change, which no program can set, says it, so that nothing has to
// be remembered of a million files; if the clock was set back since, the file is watched.
bool CShipFiles::IsSettled(const std::string& key, const struct stat& status, bool isLive, Time now) {
  if (IsQuiet(status) || IsWholeLog(m_finder.PathOf(key).c_str(), FormOf(key))) return true;
  const CFileMark mark = MarkOf(status);
  const auto found = m_unsettled.find(key);
  if (found == m_unsettled.end()) {
    if (m_unsettled.size() < kMostUnsettled)
      m_unsettled.emplace(key, CUnsettled{mark, now, now, isLive});
    else
      m_isLeftOut = true;
    return false;
  }
  CUnsettled& seen = found->second;
  if (seen.mark == mark) return now - seen.since >= kSettled;
  seen.mark = mark;
  seen.since = now;
  return false;
}

// A log that grows is sent once a minute at most. What has no row is another log than any that had its name
// before. So is a log that begins with another time than the one before it: the logger can remove a log and
// write the next one of that name before it is seen that there was none. Another file has changed.
void CShipFiles::Admit(const std::string& key, const CFileMark& mark, const std::optional<CShipFile>& row,
                       bool isLive) {
  const std::uint64_t begin = BeginOf(m_finder.PathOf(key), FormOf(key));
  const bool isAnother = row && row->begin != 0 && begin != 0 && row->begin != begin;
  if (isAnother) NoteLost(*row, "was replaced by another log before it was sent");
  CShipFile file = row && !isAnother ? *row : CShipFile{};
  if (!row || isAnother) file.log.number = NewLogNumber();
  if (isAnother) file.others = std::max(row->others, row->sequence);
  if (begin != 0) file.begin = begin;
  file.key = key;
  file.mark = mark;
  file.state = EShipped::waiting;
  file.isLive = isLive;
  file.due = row && row->sent > 0 ? row->sent + m_pause.count() : 0;
  file.pause = 0;
  m_state.Put(file);
  m_hasNew = true;
}

bool CShipFiles::CheckRows() {
  std::vector<CShipFile> rows = m_state.After(m_checked, kRows);
  m_checked = rows.size() == kRows ? rows.back().key : "";
  std::erase_if(rows, [&](const CShipFile& file) { return !CheckRow(file); });
  if (!rows.empty()) Delete(rows);
  return m_checked.empty();
}

bool CShipFiles::CheckRow(const CShipFile& file) {
  struct stat status = {};
  const std::string path = m_finder.PathOf(file.key);
  if (path.empty()) {  // of a folder that is shipped no more
    m_state.Remove(file.key);
    return false;
  }
  if (::lstat(path.c_str(), &status) != 0) {
    if ((errno != ENOENT && errno != ENOTDIR) || !m_finder.HasFolder(file.key) || !IsGone(file.key))
      return false;
    NoteLost(file, "was removed before it was sent");
    m_state.Remove(file.key);
    return false;
  }
  if (!m_absent.empty()) m_absent.erase(IdOf(file.key));
  constexpr std::int64_t kNanoseconds = 1'000'000'000, kMilliseconds = 1000;
  const std::int64_t age = WallClock() / kMilliseconds - file.mark.changed / kNanoseconds;
  return m_deleteAfter >= 0 && file.state == EShipped::archived && file.hasReceipt && age >= m_deleteAfter &&
         MayGo(file);
}

// Whether the file was absent in the round before, too: a program can remove a file to write it again, and
// then it has changed. At the start of the process all rounds count as one.
bool CShipFiles::IsGone(const std::string& key) {
  if (!m_isWalked || m_absent.erase(IdOf(key)) > 0) return true;
  if (m_absent.size() < kMostAbsent) m_absent.insert(IdOf(key));
  return false;
}

void CShipFiles::NoteLost(const CShipFile& file, const char* what) {
  if (file.state != EShipped::waiting && file.state != EShipped::sending) return;
  ++m_lost;
  m_log.Tell(m_finder.PathOf(file.key) + ": " + what);
}

// Only what the receipt is about: the content is read once more.
bool CShipFiles::MayGo(const CShipFile& file) {
  const std::string path = m_finder.PathOf(file.key);
  struct stat status = {};
  const CDescriptor opened(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (opened.Get() < 0 || ::fstat(opened.Get(), &status) != 0 || MarkOf(status) != file.mark) return false;
  if (VersionOfFile(opened.Get()) == file.version) return true;
  CShipFile changed = file;
  changed.state = EShipped::waiting;
  changed.due = 0;
  m_state.Put(changed);
  return false;
}

// The rows go first: after a kill or a loss of power between the two, a file without its row is sent again,
// but with a row of a file that was removed the next log of the name would be taken for a version of it.
void CShipFiles::Delete(const std::vector<CShipFile>& files) {
  m_state.RemoveNow(files);
  for (const CShipFile& file : files) {
    const std::string path = m_finder.PathOf(file.key);
    if (RemoveSame(path, file.mark)) {
      ++m_removed;
    } else if (errno != ENOENT && errno != ESTALE) {
      m_log.Tell(path + ": cannot be removed: " + std::strerror(errno));
      m_state.Put(file);
    }
  }
}

void CShipFiles::EndRound(Time now) {
  m_due = now + kRoundPause;
  if (m_isComplete) m_due = std::max(m_due, now + m_worked * kShareOfTime);
  m_worked = {};
}

}  // namespace vastra
