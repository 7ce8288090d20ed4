#include "host/fleet/ship_files.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/common/descriptor.h"
#include "host/fleet/chunk.h"
#include "host/fleet/file_version.h"
#include "vastra/logfiles/whole_log.h"

namespace vastra {
namespace {

constexpr std::size_t kEntries = 500, kRows = 500, kMostUnsettled = 10000;
constexpr std::chrono::seconds kSettled{3}, kLongestChange{10}, kRoundPause{2}, kUnsettledPause{1};
constexpr int kShareOfTime = 20;  // a round takes at most this part of the time

ELogForm FormOf(std::string_view key) {
  return key.ends_with(".csv") || key.ends_with(".CSV") ? ELogForm::text : ELogForm::binary;
}

// Removes the file at path if it is still this one, also if another takes its name meanwhile: it is renamed
// first, and gets its name back if it is another.
bool RemoveSame(const std::string& path, const CFileMark& mark) {
  const std::size_t name = path.rfind('/') + 1;
  const std::string aside = path.substr(0, name) + CLogFinder::AsideName(path.substr(name));
  struct stat status = {};
  if (::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) != 0) return false;
  if (::lstat(aside.c_str(), &status) == 0 && MarkOf(status) == mark) return ::unlink(aside.c_str()) == 0;
  ::renameat2(AT_FDCWD, aside.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
  return false;
}

}  // namespace

void CShipFiles::Work(Time now) {
  if (now < m_due) return;
  const bool isEnd = m_phase == EPhase::walk ? Walk(now) : CheckRows();
  m_worked += std::chrono::steady_clock::now() - now;
  if (!isEnd) return;
  if (m_phase == EPhase::rows && m_walks > 0) EndRound(now);
  m_phase = m_phase == EPhase::walk ? EPhase::rows : EPhase::walk;
}

bool CShipFiles::Walk(Time now) {
  const auto found = [&](const std::string& key, const CFileMark& mark) { Consider(key, mark, now); };
  if (!m_finder.Step(kEntries, found)) return false;
  ++m_walks;
  std::erase_if(m_unsettled, [&](const auto& one) { return one.second.walk + 1 < m_walks; });
  return true;
}

bool CShipFiles::IsComplete(Time now) const {
  return m_walks > 0 && std::none_of(m_unsettled.begin(), m_unsettled.end(), [&](const auto& one) {
           return now - one.second.first < kLongestChange;
         });
}

void CShipFiles::Hint(const std::string& path, Time now) {
  const std::string key = m_finder.KeyOf(path);
  struct stat status = {};
  if (key.empty() || !m_finder.IsLog(path.substr(path.rfind('/') + 1))) return;
  if (::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) Consider(key, MarkOf(status), now);
}

void CShipFiles::Consider(const std::string& key, const CFileMark& mark, Time now) {
  std::optional<CShipFile> row = m_state.Find(key);
  if (row && row->mark == mark) {
    m_unsettled.erase(key);
    return;
  }
  if (mark.size > kLargestFile) {
    m_log.Tell(m_finder.PathOf(key) + ": is larger than 64 GiB, left out");
    return;
  }
  if (!IsSettled(key, mark, now)) return;
  const auto seen = m_unsettled.find(key);
  const bool isLive = m_walks > 0 && (seen == m_unsettled.end() || !seen->second.isOld);
  if (seen != m_unsettled.end()) m_unsettled.erase(seen);
  Admit(key, mark, std::move(row), isLive);
}

// A whole log is complete at once. Another file is, once it has not changed for some time: it may be a copy
// that is being made.
bool CShipFiles::IsSettled(const std::string& key, const CFileMark& mark, Time now) {
  if (IsWholeLog(m_finder.PathOf(key).c_str(), FormOf(key))) return true;
  const auto found = m_unsettled.find(key);
  if (found == m_unsettled.end()) {
    if (m_unsettled.size() < kMostUnsettled)
      m_unsettled.emplace(key, CUnsettled{mark, now, now, m_walks, m_walks == 0});
    return false;
  }
  CUnsettled& seen = found->second;
  seen.walk = m_walks;
  if (seen.mark == mark) return now - seen.since >= kSettled;
  seen.mark = mark;
  seen.since = now;
  return false;
}

// A log that grows is sent once a minute at most.
void CShipFiles::Admit(const std::string& key, const CFileMark& mark, std::optional<CShipFile> row,
                       bool isLive) {
  CShipFile file = row ? *row : CShipFile{};
  file.key = key;
  file.mark = mark;
  file.state = EShipped::waiting;
  file.isLive = isLive;
  file.due = row && row->sent > 0 ? row->sent + m_pause.count() : 0;
  file.pause = 0;
  m_state.Put(file);
}

bool CShipFiles::CheckRows() {
  const std::vector<CShipFile> rows = m_state.After(m_checked, kRows);
  for (const CShipFile& file : rows) CheckRow(file);
  m_checked = rows.size() == kRows ? rows.back().key : "";
  return m_checked.empty();
}

void CShipFiles::CheckRow(const CShipFile& file) {
  struct stat status = {};
  const std::string path = m_finder.PathOf(file.key);
  if (path.empty()) {  // of a folder that is shipped no more
    m_state.Remove(file.key);
    return;
  }
  if (::lstat(path.c_str(), &status) != 0) {
    if ((errno != ENOENT && errno != ENOTDIR) || !m_finder.HasFolder(file.key)) return;
    if (file.state == EShipped::waiting || file.state == EShipped::sending) {
      ++m_lost;
      m_log.Tell(path + ": was removed before it was sent");
    }
    m_state.Remove(file.key);
    return;
  }
  constexpr std::int64_t kNanoseconds = 1'000'000'000, kMilliseconds = 1000;
  const std::int64_t age = WallClock() / kMilliseconds - file.mark.changed / kNanoseconds;
  if (m_deleteAfter >= 0 && file.state == EShipped::archived && file.hasReceipt && age >= m_deleteAfter)
    Delete(file);
}

// Only what the receipt is about: the content is read once more.
void CShipFiles::Delete(const CShipFile& file) {
  const std::string path = m_finder.PathOf(file.key);
  struct stat status = {};
  const CDescriptor opened(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (opened.Get() < 0 || ::fstat(opened.Get(), &status) != 0 || MarkOf(status) != file.mark) return;
  if (VersionOfFile(opened.Get()) != file.version) {
    CShipFile changed = file;
    changed.state = EShipped::waiting;
    changed.due = 0;
    m_state.Put(changed);
    return;
  }
  if (!RemoveSame(path, file.mark)) {
    m_log.Tell(path + ": cannot be removed: " + std::strerror(errno));
    return;
  }
  ++m_removed;
  m_state.Remove(file.key);
}

void CShipFiles::EndRound(Time now) {
  const auto pause = m_unsettled.empty() ? kRoundPause : kUnsettledPause;
  m_due = now + std::max<std::chrono::steady_clock::duration>(pause, m_worked * kShareOfTime);
  m_worked = {};
}

}  // namespace vastra
