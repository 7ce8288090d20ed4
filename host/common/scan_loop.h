// CScanLoop: the loop of a host over the stages, cut into steps. It opens the stages, says when the next scan
// is due, makes one scan at each Step, and closes the stages in the order in which they were opened. It never
// waits: a command line host sleeps between the steps, a desktop host uses its event loop.
//
//   loop.Start();
//   while (loop.IsRunning()) {
//     if (loop.IsPending()) wait for a message of a worker, then loop.Notify(message, result);
//     else wait until loop.NextDue(), then loop.Step();
//   }                      // loop.Stop() at any time, then go on until IsRunning is false
//
// Scans are due at fixed intervals from the start on, by a monotonic clock, so that they do not drift. A scan
// that becomes due during another one is skipped and counted as late.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "host/common/configuration.h"
#include "host/common/smart_logic.h"
#include "vastra/stages/log_input.h"
#include "vastra/stages/log_multi_output.h"
#include "vastra/stages/log_multi_summary.h"
#include "vastra/stages/log_trendings.h"
#include "vastra/stages/plc_multi_output.h"

namespace vastra {

// The stages that a loop opens; none: no stage.
enum class EStage { none, input, smart, outputs, summaries, plcWrite, trend };

// The key of a stage in a configuration.
const char* KeyOf(EStage stage);

// The results of the scans so far.
struct CScanCounts {
  std::uint64_t read = 0;         // samples
  std::uint64_t failedReads = 0;  // without the read that finds the end of a replay
  std::uint64_t late = 0;
  struct {  // samples that a stage refused
    std::uint64_t smart = 0, outputs = 0, summaries = 0, plcWrite = 0, trend = 0;

    std::uint64_t Sum() const { return smart + outputs + summaries + plcWrite + trend; }
  } failedWrites;

  CScanCounts& operator+=(const CScanCounts& more);
};

// How a host wants its scans. CRunOptions and the options of the command contain these.
struct CLoopOptions {
  bool threaded = false;                 // workers read and write to the PLCs, and post to target
  std::int64_t scans = -1;               // end after so many, failed reads counted; below 0: no limit
  std::chrono::milliseconds period{-1};  // 0: as fast as possible; below 0: the configuration's
  HWND target = nullptr;                 // where workers post their messages, which the host passes to Notify
  UINT node = 0;                         // number of this computer on the net of PLCs
  // Between the two sides of the smart stage; must exist while the loop exists; null: none.
  CSmartLogic* logic = nullptr;
  CTrendConfig* trend = nullptr;  // settings that the trending stage shares; null: the configuration's
  bool replayWrites = true;       // false: a replay writes to no PLC
  // How the logs are kept; the run sets live and waits. None: the default of the engine.
  std::optional<CLogPolicy> policy = std::nullopt;
  // Nodes are asked on workers, and a call of a driver is waited for so long. None: in turn, on the thread of
  // the loop, as the engine does by default.
  std::optional<std::chrono::milliseconds> patience = std::nullopt;
};

// Whether the nodes that configuration writes to stay closed, since options have a replay write to no PLC.
bool LeavesOutWriting(const CConfiguration& configuration, const CLoopOptions& options);

constexpr std::chrono::milliseconds kPatience{10000};  // of the hosts, unless the user says otherwise

class CScanLoop {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Period = std::chrono::milliseconds;

  struct COptions : CLoopOptions {
    CLogListener *outputs = nullptr, *summaries = nullptr;  // of these stages
    CLogKeeper* keeper = nullptr;                           // of both; must exist while the loop exists
    CNodeWorkers* workers =
        nullptr;  // of the nodes that are read and written; must exist while the loop exists
    // Called when scans are late, with the node that took most of the time, or an empty name.
    std::function<void(const CString& node)> late;
    std::function<void()> opened;  // called when all stages are open, before the first scan is due
    // Called at the end of each scan that read a sample, for views.
    std::function<void(CLogTrendings&)> refresh;
    // Called when the last scan is done and the stages are about to close.
    std::function<void()> closing;
    std::function<Time()> now = std::chrono::steady_clock::now;
  };

  // Pause after a failed read if the period is 0.
  static constexpr Period kRest{100};
  // The IDs of the messages of the workers.
  static constexpr UINT messageRead = 1;
  static constexpr UINT messageWritten = 2;

  // What Reload does. Both configurations and keeper must exist until it returns, keeper while the loop
  // exists.
  struct CReload {
    const CConfiguration &before, &after;  // that of the open stages, and the one to load
    // Of the logs from now on. If it is another one, the stages of the logs are opened again in any case.
    CLogKeeper* keeper = nullptr;
    // Called when a stage has closed that is opened again next, with the configuration that it gets.
    std::function<void(EStage, const CConfiguration& next)> reopening = nullptr;
    // Called when a stage has not opened, before the stages go back.
    std::function<void(EStage)> refused = nullptr;
  };

  CScanLoop(const CConfiguration& configuration, COptions options);

  // Opens the stages, input first; the first scan is due at once. 1, or 0 with all closed again; WhichFailed
  // then returns the stage that refused, FailedStage its key in a configuration, or null.
  int Start();
  EStage WhichFailed() const { return m_failedStage; }
  const char* FailedStage() const { return m_failedStage == EStage::none ? nullptr : KeyOf(m_failedStage); }

  bool IsRunning() const { return m_state != EState::closed; }
  bool IsPending() const { return m_state == EState::reading || m_state == EState::writing; }
  Period ScanPeriod() const { return m_period; }  // 0: as fast as possible
  // When the next scan is due; can be in the past. Only while running and not pending.
  Time NextDue() const { return m_due; }

  // Makes a scan: the whole scan, or its part before the worker starts.
  void Step();
  // Continues the scan with the message of its worker. An unexpected message is dropped.
  void Notify(UINT message, WPARAM result);
  // Goes on with another configuration, between two scans: only while running and not pending. A stage is
  // closed and opened again if its settings differ or the names of its samples do; all others stay open, and
  // the counts go on. If a stage does not open, those that were opened again go back to the configuration
  // before, and the result is 0. If that fails, too, the loop ends, and WhichFailed returns the stage of the
  // configuration before.
  int Reload(const CReload& reload);
  // Switches the writing to PLCs off or on from the next scan on; not from the thread of a worker. False: the
  // stage was opened without its nodes, since writing was off, and writes after the next start. A replay that
  // writes to no PLC stays so.
  bool DisableWriting(bool disable);
  // Sends what the keeper of the logs has to report, on the thread that drives the loop. The loop calls it
  // after each scan, and the stages send the rest when they close; a host also calls it while it waits for
  // long.
  void Deliver();
  // Ends the loop: at once, or when the present worker has reported.
  void Stop();

  const CScanCounts& Counts() const { return m_counts; }
  const CLogInput& Input() const { return m_input; }
  // The stages that views use; their settings can be changed between the steps.
  CLogInput& Input() { return m_input; }
  CLogTrendings& Trend() { return m_trend; }
  CPlcMultiOutput& PlcWrite() { return m_plcWrite; }
  const CLogMultiOutput& Outputs() const { return m_outputs; }
  const CLogMultiSummary& Summaries() const { return m_summaries; }

 private:
  enum class EState { closed, idle, reading, writing };
  struct CStage;
  static const CStage kStages[];  // in the order in which they are opened and closed

  EStage OpenStages();
  EStage ReopenStages(const CReload& reload, bool areLogsReopened, std::vector<const CStage*>& reopened);
  int Reopen(const CStage& stage, const CReload& reload, const CConfiguration& configuration);
  void Prepare(const CStage& stage, const CReload& reload, const CConfiguration& configuration);
  bool GoBack(const CReload& reload, const std::vector<const CStage*>& reopened);
  void SetWorkers();
  void TakeInput(const CConfiguration& configuration);
  void TakePlcWrite(const CConfiguration& configuration);
  void TakeTrend(const CConfiguration& configuration);
  int OpenInput();
  int OpenSmart();
  int OpenPlcWrite();
  int OpenTrend();
  void HaveRead(bool succeeded);
  void Distribute();
  CLogSample* PassSmart();
  void StartWrite(CLogSample& sample);
  void HaveWritten(bool succeeded);
  void Finish();
  void EndScan(bool succeeded);
  void Schedule(bool succeeded);
  void TellLate();
  void Close();

  COptions m_options;
  CLogInput m_input;
  CLogSmart m_smart;
  CLogMultiOutput m_outputs;
  CLogMultiSummary m_summaries;
  CPlcMultiOutput m_plcWrite;
  CLogTrendings m_trend;
  bool m_usesSmart = false;
  bool m_isReadOnly = false;  // a replay that writes to no PLC
  CStringArray m_inputNames;
  CStringArray m_names;  // after the smart stage
  Period m_period{};
  bool m_openedToWrite = false;
  CLogSample m_sample;       // of the input
  CLogSample m_smartSample;  // the same and the smart output variables
  EState m_state = EState::closed;
  bool m_stopping = false;
  EStage m_failedStage = EStage::none;
  Time m_due{};
  CScanCounts m_counts;
};

}  // namespace vastra
