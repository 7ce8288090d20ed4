// CShipState: what a shipper remembers of each file of its folders, in a database. If it is lost, everything
// is sent again and the archive answers that it is there.
#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <vector>

#include "host/fleet/chunk.h"
#include "host/fleet/file_mark.h"
#include "host/fleet/sqlite_store.h"

namespace vastra {

enum class EShipped { waiting, sending, sent, archived };
constexpr std::size_t kShippedStates = 4;

struct CShipFile {
  std::string key;
  CFileMark mark;
  EShipped state = EShipped::waiting;
  bool isLive = false;         // found while the shipper ran
  CVersion version = {};       // of what was read last; zeros before
  CVersion carrier = {};       // of the pack that brought it; else its own
  bool hasReceipt = false;     // of version
  std::uint64_t sequence = 0;  // of the last message that brought version, as far as it is known
  std::uint64_t others = 0;    // the highest sequence of other versions of this name
  std::int64_t due = 0;        // when to do something about it, milliseconds since 1970
  std::int64_t pause = 0;      // milliseconds to the next look for the receipt
  std::int64_t sent = 0;       // milliseconds since 1970
  CLogId log;
  std::uint64_t begin = 0;  // what the log begins with; 0: not known

  bool IsPacked() const { return carrier != version; }
};

// All operations throw CStoreFault.
class CShipState {
 public:
  struct CSum {
    std::uint64_t files = 0, bytes = 0;
  };

  // What was being sent when the process ended waits again.
  explicit CShipState(const std::string& path);

  std::optional<CShipFile> Find(std::string_view key);
  void Put(const CShipFile& file);
  void Remove(const std::string& key);
  // Commits, and removes the rows of files that are removed next. That is on the disk when it returns.
  void RemoveNow(const std::vector<CShipFile>& files);

  // Files that wait and are due, the oldest first.
  std::vector<CShipFile> Waiting(bool isLive, std::int64_t now, std::size_t most);
  // Files that are sent, without a receipt, and are due.
  std::vector<CShipFile> Overdue(std::int64_t now, std::size_t most);
  // Of the files that are sent and have no receipt, this one or all that its pack has brought: they are due
  // at this time, or wait again.
  void Postpone(const CShipFile& file, std::int64_t due, std::int64_t pause);
  void MakeWait(const CShipFile& file);
  void MakePackWait(const CVersion& pack);
  // Files by key, from after this one on.
  std::vector<CShipFile> After(const std::string& key, std::size_t most);

  const CSum& Sum(EShipped state) const { return m_sums[static_cast<std::size_t>(state)]; }
  // When the oldest file that is not archived was changed, nanoseconds since 1970.
  std::optional<std::int64_t> Oldest();

  // The record that receipts come from. With another one than before no file has a receipt, and all wait.
  // Returns whether it is another one.
  bool SetArchive(const std::string& id);
  // Receipts of files that are sent are due.
  void MakeDue();

  // What was changed is stored, if the first change was so long ago. What is lost with the process is found
  // and sent again.
  void Commit(std::chrono::milliseconds age = {});

 private:
  void Change();
  void AddUp();
  std::vector<CShipFile> All(CStatement& rows);

  CSqliteStore m_store;
  CStatement m_find, m_put, m_remove, m_waiting, m_overdue, m_inPack, m_postpone, m_after, m_oldest;
  std::array<CSum, kShippedStates> m_sums = {};
  std::string m_archive;
  std::optional<std::chrono::steady_clock::time_point> m_changed;  // without a commit since
};

// Milliseconds since 1970 by this machine's clock.
std::int64_t WallClock();
// A time that is later than any that is set: the clock was set back since.
constexpr std::int64_t kFarAhead = std::int64_t{2} * 3600 * 1000;

}  // namespace vastra
