// CShipFiles: finds the logs of a node that are to be sent, and removes those that may go.
#pragma once

#include <unordered_map>
#include <unordered_set>

#include "host/fleet/log_finder.h"
#include "host/fleet/ship_state.h"
#include "host/fleet/told_once.h"

namespace vastra {

class CShipFiles {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // deleteAfter: age in seconds of an archived file that is removed; negative: none is. pause: between two
  // versions of a name.
  CShipFiles(CLogFinder& finder, CShipState& state, std::int64_t deleteAfter, std::chrono::milliseconds pause,
             CToldOnce& log)
      : m_finder(finder), m_state(state), m_deleteAfter(deleteAfter), m_pause(pause), m_log(log) {}

  // What has come into the folders, and a step of the walk through them, or of the look at the files that
  // were found before. Throws CStoreFault.
  void Work(Time now);
  // A log that was closed a moment ago.
  void Hint(const std::string& path, Time now);

  // Whether all folders were walked through and each file that was found is known to be whole, or changes for
  // a long time already.
  bool IsComplete(Time now) const;
  std::size_t Unsettled() const { return m_unsettled.size(); }
  Time Due() const { return m_due; }
  std::uint64_t Removed() const { return m_removed; }
  std::uint64_t Lost() const { return m_lost; }  // files that went before they were sent

 private:
  struct CUnsettled {
    CFileMark mark;
    Time since, first;
    bool isLive;
  };

  // isLive: it was not there before the shipper ran.
  void Consider(const std::string& key, const struct stat& status, bool isLive, Time now);
  bool IsSettled(const std::string& key, const struct stat& status, bool isLive, Time now);
  void Admit(const std::string& key, const CFileMark& mark, const std::optional<CShipFile>& row, bool isLive);
  void CheckUnsettled(Time now);
  void Step(Time now);
  // Whether it came to the end.
  bool Walk(Time now);
  bool CheckRows();
  // Whether the file is to be removed.
  bool CheckRow(const CShipFile& file);
  bool IsGone(const std::string& key);
  void NoteLost(const CShipFile& file, const char* what);
  bool MayGo(const CShipFile& file);
  void Delete(const std::vector<CShipFile>& files);
  void EndRound(Time now);

  CLogFinder& m_finder;
  CShipState& m_state;
  const std::int64_t m_deleteAfter;
  const std::chrono::milliseconds m_pause;
  CToldOnce& m_log;

  enum class EPhase { walk, rows };
  // What may go makes room on a full disk.
  EPhase m_phase = m_deleteAfter < 0 ? EPhase::walk : EPhase::rows;
  std::string m_checked;  // the key of the last row that was looked at
  std::unordered_map<std::string, CUnsettled> m_unsettled;
  std::unordered_set<std::size_t>
      m_absent;               // ids of keys whose files were not there in this round, or the last one
  bool m_hasNew = false;      // since the last commit
  bool m_isLeftOut = false;   // in this walk a file for which m_unsettled has no room
  bool m_isWalked = false;    // once
  bool m_isComplete = false;  // the last walk
  Time m_due{}, m_unsettledDue{};
  std::chrono::steady_clock::duration m_worked{};  // in this round
  std::uint64_t m_removed = 0, m_lost = 0;
};

}  // namespace vastra
