// CRun: a run of one configuration, from the checks before the stages open to the files that were written.
// The command, the desktop and any other host drive it; a host adds observers for what it shows.
//
//   CRunMessenger messenger;                   // before all links, installed by CLink::SetMessenger
//   CRun run(configuration, messenger);
//   for (warning : run.Warnings()) show it; refuse if run.EquationFaults() is not empty
//   run.AddObserver(&progress);
//   if (!run.Start()) show run.OpenFault();
//   while (run.IsRunning()) {
//     if (run.IsPending()) wait for a message of a worker, then run.Notify(message, result);
//     else wait until run.NextDue(), then run.Step();
//   }
//
// The run never waits itself: a command sleeps between the steps, a desktop lets its event loop pace them.
// One thread at a time drives it. Stop can be called between the steps, and Start and Stop on a thread of
// their own while the host leaves the run alone.
#pragma once

#include <atomic>
#include <memory>
#include <set>

#include "host/common/checks.h"
#include "host/common/equation_check.h"
#include "host/run/live_state.h"
#include "host/run/repeated_messages.h"
#include "host/run/run_messenger.h"
#include "host/run/run_report.h"
#include "host/run/written_files.h"

namespace vastra {

struct CRunOptions : CLoopOptions {
  std::function<void()> trendChanged = {};  // a view or a dialog has changed them
  bool reports = false;                     // sends what a healthy run does as Notices, see CRunReport
  // Whether the host wants to stop, asked all the time while the run waits for a driver: patience is then the
  // limit of all waits. A host without it calls AskToStop.
  std::function<bool()> stopAsked = {};
  EFolders folders = EFolders::attempt;  // what the checks do with those of the logs
};

// A configuration, and what is worked out of it before its stages open, without contacting a PLC.
struct CRunPlan {
  CConfiguration configuration;  // of a replay whose logs are kept by a policy: without the bad logs
  CStringList replayed;          // the whole list of a replay
  std::vector<CString> badLogs;  // a line for each log that was left out
  CStageNames names;             // of the samples of each stage
};

class CRun : private CRunMessenger::CReader {
 public:
  using Time = CScanLoop::Time;

  // Works out the names, without a message and without contacting a PLC. messenger is the one that the links
  // use. It must exist until the run is destroyed, and no other run may use it before that.
  CRun(const CConfiguration& configuration, CRunMessenger& messenger, const CRunOptions& options = {});
  ~CRun() override;
  CRun(const CRun&) = delete;
  CRun& operator=(const CRun&) = delete;

  // The plan of the run, and that of another configuration.
  const CRunPlan& Plan() const { return m_plan; }
  CRunPlan PlanOf(const CConfiguration& configuration) const;
  const CConfiguration& Configuration() const { return m_plan.configuration; }
  const CStageNames& Names() const { return m_plan.names; }
  // The names of the samples that the observers get, as far as they can be worked out before the start.
  CStringArray SampleNames() { return TrendNames(Names(), *Trend().GetOptions()); }
  // What the checks find now. A host does not start a run with a finding that is refused. Without a policy
  // for logs all of them are warnings.
  std::vector<CFinding> Findings() const { return Findings(m_plan); }
  std::vector<CFinding> Findings(const CRunPlan& plan) const;
  // The lines of those that are warnings, and of those that are refused.
  std::vector<CString> Warnings() const { return LinesOf(Findings(), false); }
  std::vector<CString> Refusals() const { return LinesOf(Findings(), true); }
  // With a policy for logs: the logs of a replay that are bad, a line each. The run leaves them out.
  const std::vector<CString>& BadLogs() const { return m_plan.badLogs; }
  // Whether a run of plan writes to its PLCs.
  bool WritesToPlcs(const CRunPlan& plan) const {
    return !plan.configuration.m_plcWrite.m_disableWriting &&
           !LeavesOutWriting(plan.configuration, m_options);
  }
  // The equation lists that do not compile. A host does not start a run that has one.
  std::vector<CEquationFinding> EquationFaults() const { return EquationFaults(m_plan); }
  std::vector<CEquationFinding> EquationFaults(const CRunPlan& plan) const;

  // Adds an observer, which must exist as long as the run; only while the run is stopped.
  void AddObserver(CRunObserver* observer) { m_observers.push_back(observer); }

  // Opens the stages; the first scan is due at once. 1, or 0 with all closed again; OpenFault then says why.
  int Start();
  // One line: the stage and why it does not open.
  CString OpenFault() const;
  // Whether it can open later with the same configuration, see MayOpenLater.
  bool OpensLater() const;

  bool IsRunning() const { return m_loop.IsRunning(); }
  bool IsPending() const { return m_loop.IsPending(); }
  CScanLoop::Period Period() const { return m_loop.ScanPeriod(); }  // 0: as fast as possible
  Time NextDue() const { return m_loop.NextDue(); }  // of the next scan; only while running and not pending

  // Makes a scan: the whole of it, or up to the start of its worker.
  void Step();
  // Accepts the message of a worker and continues its scan.
  void Notify(UINT message, WPARAM result);
  // Goes on with another configuration, of which the host has shown that nothing in it is refused; between
  // two scans, while running and not pending. A stage is opened again if its settings or the names of its
  // samples differ; the others stay open, no sample is left out, and counts and accounts go on. 1, or 0 with
  // the stages as they were before; if these do not open again either, the run has ended, and OpenFault says
  // why. ReloadFault says why the new ones do not open, in one line.
  int Reload(const CRunPlan& plan);
  const CString& ReloadFault() const { return m_reloadFault; }
  // Ends the run: at once, or when the current worker has posted its result.
  void Stop();
  // From any thread, before Stop: waits for drivers end within patience from now on.
  void AskToStop() { m_isStopping = true; }
  // Whether the logs are kept by a policy.
  bool KeepsLogs() const { return m_pKeeper != nullptr; }
  // Reports what has happened to the logs since the last scan. DriveToEnd calls it each second, so that a
  // full disk is reported before the next scan of a slow run.
  void Deliver();
  // Turns the writing to PLCs off or on from the next scan on. False: the stage was opened without its nodes,
  // since writing was off, and writes after the next start.
  bool DisableWriting(bool disable) { return m_loop.DisableWriting(disable); }

  // On the thread that drives the run; Live is for all others.
  const CRunCounts& Counts() const { return m_counts; }
  // The accounts of the outputs and then of the summaries, in order, and at the end those of the journals
  // that the run has recovered for others. After Stop they are those of the run that has ended.
  std::vector<CRunLedger> Ledger() const;
  // Of the files written so far, those that still exist: absolute paths in byte order.
  std::vector<std::string> Files() const { return m_files.Existing(); }
  // The stages that views work on; their settings may be changed between the steps.
  CLogInput& Input() { return m_loop.Input(); }
  CLogTrendings& Trend() { return m_loop.Trend(); }

  // The present state, from any thread.
  CLiveSnapshot Live() const { return m_pLive->Snapshot(); }
  // The same for a reader that looks often. It can outlive the run.
  std::shared_ptr<const CLiveState> LiveState() const { return m_pLive; }

 private:
  // The listener of a stage: adds which of its outputs or summaries a file belongs to.
  class CLogs : public CLogListener {
   public:
    CLogs(CRun& run, std::vector<CLogSource> sources) : m_run(run), m_sources(std::move(sources)) {}
    void SetSources(std::vector<CLogSource> sources) { m_sources = std::move(sources); }
    void LogClosed(const CSavedLog& log) override { Tell(&CRunObserver::LogClosed, log); }
    void LogGrew(const CSavedLog& log) override { Tell(&CRunObserver::LogGrew, log); }
    void LogNotSaved(const CUnsavedLog& log) override { Tell(&CRunObserver::LogNotSaved, log); }

    // The output or summary at index; empty below 0.
    CString PlaceOf(int index) const {
      if (index < 0) return {};
      const CLogSource& source = m_sources[static_cast<std::size_t>(index)];
      return source.name.IsEmpty() ? source.key : source.key + " \"" + source.name + "\"";
    }

   private:
    template <class EVENT, class LOG>
    void Tell(EVENT event, const LOG& log) {
      const auto source = std::min(static_cast<std::size_t>(log.log), m_sources.size() - 1);
      m_run.Tell(event, m_sources[source], log);
    }

    CRun& m_run;
    std::vector<CLogSource> m_sources;
  };

  CString Place() const override;
  bool TakeMessage(const char* linkType, const char* linkName, char function, char severity,
                   const char* text) override;
  CScanLoop::COptions LoopOptions(const CRunOptions& options);
  std::unique_ptr<CNodeWorkers> MakeWorkers(const CRunOptions& options);
  std::unique_ptr<CLogKeeper> MakeKeeper(const CInputConfig& input) const;
  void MakeReport();
  int ReloadStages(const CRunPlan& plan, CString& reopened);
  void EndLedgers(EStage stage, const CConfiguration& configuration);
  void EndKeeper(CLogKeeper& keeper);
  void Report(const CString& reopened);
  CString OpenFaultOf(const CConfiguration& configuration) const;
  void TellLate(const CString& node);
  template <class ACTION>
  void Drive(ACTION action);
  void Say(const CRunMessage& message);
  void CountRepeated(bool isScanDone);
  void ShowJournals(const std::vector<CKeeperLine>& lines);
  void DeliverRecovered();
  void Publish();
  void PublishNodes();
  void Count();
  template <class EVENT, class... ARGUMENTS>
  void Tell(EVENT event, const ARGUMENTS&... arguments) {
    for (CRunObserver* observer : m_observers) (observer->*event)(arguments...);
  }

  const CRunOptions m_options;
  CRunMessenger& m_messenger;
  CRunPlan m_plan;
  const std::shared_ptr<CLiveState> m_pLive = std::make_shared<CLiveState>();
  CWrittenFiles m_files;
  std::vector<CRunObserver*> m_observers{m_pLive.get(), &m_files};
  CRunCounts m_counts;
  CRepeatedMessages m_repeated;  // while the messenger speaks to people
  std::unique_ptr<CRunReport> m_pReport;
  CLogs m_outputLogs, m_summaryLogs;
  CLogs m_recoveredLogs;                   // of journals that no open output or summary owns
  bool m_isRenamed = false;                // since the last sample
  Time m_sumsDue{};                        // when m_counts.kept is to be updated
  std::vector<CRunLedger> m_endedLedgers;  // of stages that a reload has closed
  std::set<EStage> m_notReopened;          // of these, the stages that did not open again: the run has ended
  std::unique_ptr<CLogKeeper> m_pKeeper;   // null: the default of the engine
  CString m_reloadFault;
  std::atomic<bool> m_isStopping{false};
  const std::unique_ptr<CNodeWorkers> m_pWorkers;  // null: the same
  CScanLoop m_loop;
};

}  // namespace vastra
