#include "host/cli/logger_session.h"

#include <algorithm>
#include <mutex>

#include "host/cli/terminal/terminal.h"
#include "host/cli/time_text.h"
#include "host/common/message_text.h"
#include "host/common/shown_text.h"
#include "host/run/open_fault.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/node_workers.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kFirstPause{1}, kLongestPause{30}, kLook{1};

// Each of these calls keeps a thread, and each attempt can add some.
constexpr int kMostOverdue = 64;

CScanLoop::Time Now() { return std::chrono::steady_clock::now(); }

bool IsFinal(const CFinding& finding) { return finding.isRefused && !finding.mayPass; }

}  // namespace

class CLoggerSession::CWitness : public CRunObserver {
 public:
  CWitness(CLoggerSession& session, const CRun& run) : m_session(session), m_live(run.LiveState()) {}

  void Message(const CRunMessage& message) override {
    const std::lock_guard lock(m_mutex);
    if (message.severity <= severityError && m_error.empty() && !AddsNothing(message))
      m_error = MessageText(message);
  }
  void Stopping() override {
    if (!m_session.m_isReloading) m_session.m_notifier.Stopping();
  }
  // The first error, which is why a stage does not open if nothing else says so.
  CString Error() const {
    const std::lock_guard lock(m_mutex);
    return CString(m_error);
  }
  void Forget() {
    const std::lock_guard lock(m_mutex);
    m_error.clear();
  }
  // The status of a run in one line. Called between two scans.
  std::string Text() {
    m_live->CopyNewest(m_newest);
    const CScanCounts& scans = m_newest.counts.scans;
    std::string text = "running: " + vastra::Counted(scans.read + scans.failedReads, "scan");
    if (scans.failedReads) text += ", " + std::to_string(scans.failedReads) + " failed";
    if (scans.late) text += ", " + std::to_string(scans.late) + " late";
    if (m_newest.number) text += ", last sample " + LocalTimeText(m_newest.time.time);
    if (const auto away = Away(m_newest.nodes) + Away(m_newest.written))
      text += ", " + vastra::Counted(away, "node") + " away";
    text += ", " + vastra::Counted(m_newest.counts.fill.m_samples, "row") + " in memory";
    const std::uint64_t lost = m_newest.counts.kept.lost;
    return lost ? text + ", " + std::to_string(lost) + " lost" : text;
  }

 private:
  static std::uint64_t Away(const std::shared_ptr<const std::vector<CNodeState>>& nodes) {
    return nodes ? static_cast<std::uint64_t>(std::ranges::count(*nodes, false, &CNodeState::isUp)) : 0;
  }

  CLoggerSession& m_session;
  const std::shared_ptr<const CLiveState> m_live;
  CLiveNewest m_newest;
  mutable std::mutex m_mutex;  // of the error: the message of a worker comes on its thread
  std::string m_error;
};

CLoggerSession::CLoggerSession(const CString& subject, const CConfiguration& configuration,
                               const CSessionOptions& options, CSessionView& view)
    : m_subject(subject),
      m_configuration(configuration),
      m_options(options),
      m_view(view),
      m_console(options.verbosity, !options.loop.policy),
      m_notifier(IsService()) {}

EExit CLoggerSession::Run(CSessionResult& result) {
  for (;;) {
    if (m_options.retries) CTerminal::Instance().Told().BeginAttempt();
    const CEnd end = Attempt(result);
    if (!m_options.retries || end.reason.IsEmpty()) return end.status;
    if (CNodeWorkers::OverdueTasks() > kMostOverdue)
      return Fail(kFailed, m_subject,
                  "drivers have not returned from too many calls: the logger has to be started again");
    if (!WaitAfter(end.reason)) return m_view.End();
    if (end.status == kRefused) CDriverFactory::SearchAgain();  // a module can be missing
  }
}

CRunOptions CLoggerSession::RunOptions() {
  CRunOptions options = {m_options.loop};
  const bool isPlain = !options.policy;
  options.target = &m_inbox;
  options.reports = m_options.reports && !isPlain;
  options.folders = m_options.folders;
  options.stopAsked = [this] { return m_notifier.Feed(), CStopSignals::HaveCome(); };
  if (!isPlain) options.policy->waiting = options.stopAsked;
  return options;
}

CLoggerSession::CEnd CLoggerSession::Attempt(CSessionResult& result) {
  CRun run(m_configuration, m_console.Messenger(), RunOptions());
  const std::vector<CFinding> findings = run.Findings();
  PrintWarnings(m_subject, findings);
  if (PrintBadLogs(m_subject, run.BadLogs(), m_options.isStrict) != kDone) return {kFailed, run.BadLogs()[0]};
  const std::vector<CEquationFinding> faults = run.EquationFaults();
  if (PrintRefusals(m_subject, findings, faults) != kDone) return Refuse(findings, !faults.empty());
  if (run.Names().hasInput) {
    const EExit status = m_view.Begin(run.SampleNames());
    if (status != kDone) return {status};
  }
  PrintReadOnly(m_subject, m_configuration, m_options.loop);
  CatchSignals();
  SetReady();
  CWitness witness(*this, run);
  run.AddObserver(&m_view);
  if (IsService() || m_options.retries) run.AddObserver(&witness);
  if (m_options.feed) m_options.feed->Attach(run);
  Feed("opening");
  // A signal while the stages open, a driver among them, ends a run without a scan.
  if (!run.Start() && !CStopSignals::HaveCome()) return NotOpened(run, witness.Error());
  HaveStarted();
  const auto show = [&] {
    m_notifier.Feed();
    if (m_notifier.IsStatusDue()) m_notifier.Status(witness.Text());
    return std::min(m_view.Show(), m_notifier.NextFeed());
  };
  bool hasReloadEndedIt = false;
  DriveToEnd(run, m_inbox, show, [&](UINT) {
    witness.Forget();
    hasReloadEndedIt = !Reload(&run) && !run.IsRunning();
  });
  result.Add(run);
  if (!hasReloadEndedIt || CStopSignals::HaveCome()) return {m_view.End()};
  CEnd end = NotOpened(run, witness.Error());
  if (m_options.retries && !end.reason.IsEmpty()) return end;
  result.hasFailed = true;
  return {m_view.End()};
}

// The stages of a run did not open, or did not open again. why: the first error.
CLoggerSession::CEnd CLoggerSession::NotOpened(const CRun& run, const CString& why) {
  const CString fault = run.OpenFault();
  Fail(kFailed, m_subject, fault);
  if (!run.OpensLater()) return {m_options.retries ? kRefused : kFailed};
  return {kFailed, fault.Find(WhyNotOpened("")) < 0 || why.IsEmpty() ? fault : why};
}

// The refusals have been printed. If each of them may pass, the first one is the reason.
CLoggerSession::CEnd CLoggerSession::Refuse(const std::vector<CFinding>& findings, bool isFinal) {
  const auto first = std::ranges::find_if(findings, &CFinding::isRefused);
  if (isFinal || std::ranges::any_of(findings, IsFinal) || first == findings.end()) return {kRefused};
  return {kRefused, first->Line()};
}

void CLoggerSession::HaveStarted() {
  CTerminal::Instance().Told().EndAttempts();
  if (m_pause.count() > 0) CTerminal::Instance().Remark("vastra: " + m_subject + ": the logger has started");
  m_pause = {};
}

// Waits for the next attempt. False: a signal has ended the wait.
bool CLoggerSession::WaitAfter(const CString& reason) {
  CatchSignals();
  SetReady();
  CTerminal::Instance().Remark("vastra: " + m_subject + ": tried again until the reason has passed, each " +
                               CString(std::to_string(kLongestPause.count())) + " s at last");
  if (m_options.feed) m_options.feed->Wait(reason);
  m_pause = m_pause.count() == 0 ? kFirstPause : std::min(2 * m_pause, kLongestPause);
  return WaitUntil(Now() + m_pause, reason);
}

bool CLoggerSession::WaitUntil(CScanLoop::Time until, const CString& reason) {
  while (!CStopSignals::HaveCome()) {
    Feed("waiting: " + reason.Std());
    CMessage message;
    if (m_inbox.Wait(message, std::min({until, Now() + kLook, m_notifier.NextFeed()}))) {
      if (message.m_message != CReloadSignal::messageReload || !Reload(nullptr)) continue;
      m_pause = kFirstPause;
      return true;
    }
    if (Now() >= until) return true;
  }
  return false;
}

void CLoggerSession::CatchSignals() {
  if (m_stops) return;
  m_stops.emplace(m_inbox);
  if (IsService()) m_reloads.emplace(m_inbox);
}

// Reads and checks the configuration again and, if it is good, uses it: run goes on with it, or the next
// attempt if run is null. Otherwise nothing has changed, or run has ended since its stages did not open
// again.
bool CLoggerSession::Reload(CRun* run) {
  CReloadSignal::Begin();
  m_notifier.Reloading();
  CConfiguration fresh;
  CString fault;
  m_isReloading = true;
  const bool isDone =
      m_options.load(fresh) == kDone && (run ? GoesOnWith(fresh, *run, fault) : CanBegin(fresh));
  m_isReloading = false;
  if (isDone) {
    m_configuration = std::move(fresh);
    CTerminal::Instance().Remark("vastra: " + m_subject + ": reloaded");
  } else {
    const bool goesOn = !run || run->IsRunning();
    Fail(kFailed, m_subject,
         "not reloaded" + (fault.IsEmpty() ? CString() : ": " + fault) +
             (goesOn ? ": the logger goes on with the configuration that it has"
                     : ": the configuration before does not open again either"));
  }
  m_notifier.Ready();
  return isDone;
}

bool CLoggerSession::GoesOnWith(const CConfiguration& fresh, CRun& run, CString& fault) {
  CRunPlan plan = run.PlanOf(fresh);
  if (std::ranges::any_of(run.Findings(plan), &CFinding::isRefused)) {
    CDriverFactory::SearchAgain();  // the new configuration can need a module that is new, too
    plan = run.PlanOf(fresh);
  }
  if (PrintVerdict(m_subject, run.Findings(plan), plan.badLogs, run.EquationFaults(plan),
                   m_options.isStrict) != kDone)
    return false;
  if (run.Reload(plan)) return true;
  fault = run.ReloadFault();
  return false;
}

// What may pass is left to the next attempt.
bool CLoggerSession::CanBegin(const CConfiguration& fresh) {
  const CRun run(fresh, m_console.Messenger(), RunOptions());
  std::vector<CFinding> findings = run.Findings();
  std::erase_if(findings, [](const CFinding& finding) { return finding.mayPass; });
  return PrintVerdict(m_subject, findings, {}, run.EquationFaults(), false) == kDone;
}

void CLoggerSession::SetReady() {
  if (IsService() && !std::exchange(m_isReady, true)) m_notifier.Ready();
}

void CLoggerSession::Feed(const std::string& status) {
  if (!IsService()) return;
  m_notifier.Feed();
  m_notifier.Status(status);
}

EExit RunSession(const CString& subject, const CConfiguration& configuration, const CSessionOptions& options,
                 CSessionView& view, CSessionResult& result) {
  return CLoggerSession(subject, configuration, options, view).Run(result);
}

}  // namespace vastra
