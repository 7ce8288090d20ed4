// CPlantState: what the main window says about each part of the open configuration, and what is wrong now.
// The window passes a copy of the live state a few times a second and copies the rows to the screen.
//
// A problem stays in the list until its cause is gone or the user has acknowledged it. One that comes back
// within a minute is not reported again.
#pragma once

#include <array>
#include <map>

#include "host/desktop/plant_parts.h"
#include "host/run/live_state.h"

namespace vastra {

// What the host knows of the run besides its live state.
struct CPlantRun {
  bool isRunning = false;
  CString word = "stopped";  // while it is not running: "stopped", "starting", "stopping"
  bool isStopped = true;
  bool keepsLogs = true;                // by a policy: only then there are accounts
  std::chrono::milliseconds period{0};  // of the scans
  CString noWriting;                    // why nothing is written to PLCs; empty: it is
  CString startFault;                   // why the run has not started; it begins with a key
};

struct CPlantNow {
  std::chrono::steady_clock::time_point steady;
  _timeb wall;
};

struct CPlantProblem {
  enum class EWeight { note, warning, error };
  CString identity;  // the same as long as the cause is the same
  EWeight weight;
  std::size_t row;  // the part that it is about
  CString text;
};

// A count of failures: when it has risen last, and how often it has after a pause.
class CRisingCount {
 public:
  using Time = std::chrono::steady_clock::time_point;
  void Note(std::uint64_t count, Time now);
  bool HasJustRisen(Time now) const;
  int Times() const { return m_times; }

 private:
  std::uint64_t m_count = 0;
  Time m_last{};
  int m_times = 0;
};

class CPlantState {
 public:
  // Forgets what was acknowledged.
  void SetConfiguration(const CConfiguration& configuration, int inputVariables);
  void SetTrend(const CTrendConfig& trend);
  void Look(const CPlantRun& run, const CLiveNewest& newest, const CPlantNow& now);

  const std::vector<CPlantRow>& Rows() const { return m_rows; }
  // Those that are not acknowledged, the most severe ones first.
  const std::vector<CPlantProblem>& Problems() const { return m_problems; }
  void Acknowledge(const CString& identity);

 private:
  friend class CPlantLook;
  using Time = std::chrono::steady_clock::time_point;
  void KeepAcknowledged(Time now);

  std::vector<CPlantRow> m_rows;
  bool m_isReplay = false, m_hasInput = false;
  std::vector<CPlantProblem> m_problems;
  std::map<CString, Time> m_acknowledged;                                       // when each was there last
  std::array<CRisingCount, static_cast<std::size_t>(EPart::count)> m_failures;  // of the stages
  std::vector<CRisingCount> m_losses;                                           // of the rows
};

}  // namespace vastra
