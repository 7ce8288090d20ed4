#include "host/run/run.h"

#include <utility>

#include "host/common/key_path.h"
#include "host/common/replay_list.h"
#include "host/run/open_fault.h"

namespace vastra {
namespace {

template <class CONFIG>
std::vector<CLogSource> SourcesOf(const CList<CONFIG*, CONFIG*>& configs, const char* list) {
  std::vector<CLogSource> sources;
  for (const CONFIG* config : configs)
    sources.push_back({KeyPath(list, static_cast<int>(sources.size())), config->m_name});
  return sources;
}

constexpr std::chrono::milliseconds kSumsPause{250};

// Whether a keeper for this input can be the same.
bool HasSamePolicy(const CLogPolicy& a, const CLogPolicy& b) {
  return a.live == b.live && a.waits == b.waits;
}

CLogPolicy PolicyFor(const CInputConfig& input, const CRunOptions& options) {
  CLogPolicy policy = *options.policy;
  policy.live = !input.m_simulating;
  const bool isPaced = options.period.count() < 0 ? !input.m_asFastAsPossible && input.m_scanPeriod != 0
                                                  : options.period.count() > 0;
  policy.waits = !policy.live || !isPaced;
  return policy;
}

template <class CONFIG>
void AddLedgers(const CList<CONFIG*, CONFIG*>& configs, bool areSummaries, std::vector<CLogLedger> ledgers,
                std::vector<CRunLedger>& all) {
  ledgers.resize(static_cast<std::size_t>(configs.GetCount()));
  std::size_t index = 0;
  for (const CONFIG* config : configs)
    all.push_back({config->m_name, areSummaries, std::move(ledgers[index++])});
}

void AddOthers(const CLogKeeper& keeper, std::vector<CRunLedger>& all) {
  for (const COtherLedger& other : keeper.Others())
    all.push_back({other.name, other.isSummary, other.ledger});
}

CRunPlan MakePlan(const CConfiguration& configuration, CRunMessenger& messenger, const CRunOptions& options) {
  CRunPlan plan = {configuration, configuration.m_input.m_inputFiles, {}, {}};
  if (options.policy) plan.badLogs = LeaveOutBadLogs(plan.configuration);
  const CRunMessenger::CQuiet quiet(messenger);
  plan.names = FindStageNames(plan.configuration);
  return plan;
}

}  // namespace

CRun::CRun(const CConfiguration& configuration, CRunMessenger& messenger, const CRunOptions& options)
    : m_options(options),
      m_messenger(messenger),
      m_plan(MakePlan(configuration, messenger, options)),
      m_outputLogs(*this, SourcesOf(Configuration().m_outputs.m_outputs, "outputs")),
      m_summaryLogs(*this, SourcesOf(Configuration().m_summaries.m_summaries, "summaries")),
      m_recoveredLogs(*this, {{"recovered", ""}}),
      m_pKeeper(MakeKeeper(Configuration().m_input)),
      m_pWorkers(MakeWorkers(options)),
      m_loop(Configuration(), LoopOptions(options)) {
  Trend().SetOptionsListener([this] {
    m_isRenamed = true;
    if (m_options.trendChanged) m_options.trendChanged();
  });
  MakeReport();
  m_messenger.Attach(this);
}

CRun::~CRun() { m_messenger.Attach(nullptr); }

std::unique_ptr<CNodeWorkers> CRun::MakeWorkers(const CRunOptions& options) {
  if (!options.patience) return nullptr;
  return std::make_unique<CNodeWorkers>(*options.patience, [this, asked = options.stopAsked] {
    const bool isAsked = asked && asked();  // also during the stop: a host can be watched until its end
    return isAsked || m_isStopping;
  });
}

void CRun::TellLate(const CString& node) {
  const CString line = node.IsEmpty() ? CString("scans are late: the last one took longer than the period")
                                      : "scans are late: the last one waited for " + node;
  m_messenger.Send("CScanLoop", "Scan", functionRead, severityWarning, line);
}

std::unique_ptr<CLogKeeper> CRun::MakeKeeper(const CInputConfig& input) const {
  return m_options.policy ? std::make_unique<CLogKeeper>(PolicyFor(input, m_options)) : nullptr;
}

// Puts the report of the present configuration in the place of the one before.
void CRun::MakeReport() {
  std::erase(m_observers, m_pReport.get());
  if (!m_options.reports) return;
  m_pReport = std::make_unique<CRunReport>(Configuration(), m_options, [this](const std::string& line) {
    Say({{}, severityNotice, functionOpen, "CRun", "Run", line.c_str()});
  });
  m_observers.push_back(m_pReport.get());
}

CRunPlan CRun::PlanOf(const CConfiguration& configuration) const {
  return MakePlan(configuration, m_messenger, m_options);
}

std::vector<CFinding> CRun::Findings(const CRunPlan& plan) const {
  return CheckConfiguration(plan.configuration, GivenNames(plan.configuration, plan.names),
                            {KeepsLogs(), m_options.folders, m_options.replayWrites, &plan.replayed});
}

std::vector<CEquationFinding> CRun::EquationFaults(const CRunPlan& plan) const {
  return FindEquationFaults(plan.configuration,
                            KeepsLogs() ? GivenNames(plan.configuration, plan.names) : plan.names);
}

CScanLoop::COptions CRun::LoopOptions(const CRunOptions& options) {
  CScanLoop::COptions result;
  static_cast<CLoopOptions&>(result) = options;
  if (result.scans == 0) result.scans = -1;  // Start ends the run then
  result.outputs = &m_outputLogs;
  result.summaries = &m_summaryLogs;
  result.keeper = m_pKeeper.get();
  result.workers = m_pWorkers.get();
  if (m_pWorkers) result.late = [this](const CString& node) { TellLate(node); };
  result.opened = [this] {
    if (m_pKeeper) ShowJournals(m_pKeeper->RecoverOthers(&m_recoveredLogs));
  };
  result.refresh = [this](CLogTrendings&) { Publish(); };
  result.closing = [this] { Tell(&CRunObserver::Stopping); };
  return result;
}

// The lines go the way of the messages of the links.
void CRun::ShowJournals(const std::vector<CKeeperLine>& lines) {
  for (const CKeeperLine& line : lines)
    m_messenger.Send("CLogKeeper", "Journals", functionOpen, line.severity, line.text);
}

// Reports what has happened to the logs of recovered journals.
void CRun::DeliverRecovered() {
  if (m_pKeeper) ShowJournals(m_pKeeper->DeliverOthers(&m_recoveredLogs));
}

int CRun::Start() {
  m_isStopping = false;
  m_isRenamed = false;
  m_sumsDue = {};
  if (!m_loop.Start()) {
    m_repeated.End([this](const CRunMessage& message) { Say(message); });
    return 0;
  }
  m_counts = {};
  Tell(&CRunObserver::Started, SampleNames());
  Count();
  Tell(&CRunObserver::Counted, m_counts);
  if (m_options.scans == 0) Stop();
  return 1;
}

CString CRun::OpenFault() const { return OpenFaultOf(Configuration()); }

CString CRun::OpenFaultOf(const CConfiguration& configuration) const {
  const EStage stage = m_loop.WhichFailed();
  const bool isKept = m_pKeeper && (stage == EStage::outputs || stage == EStage::summaries);
  const CString kept = isKept ? m_pKeeper->GetOpenFault() : CString();
  return CString(KeyOf(stage)) + ": the stage does not open: " +
         (kept.IsEmpty() ? WhyNotOpened(FindOpenFault(configuration, stage)) : kept);
}

bool CRun::OpensLater() const {
  if (m_loop.WhichFailed() == EStage::input && !m_plan.replayed.IsEmpty()) return true;
  return MayOpenLater(Configuration(), m_loop.WhichFailed());
}

void CRun::Step() {
  Drive([this] { m_loop.Step(); });
}

void CRun::Notify(UINT message, WPARAM result) {
  Drive([&] { m_loop.Notify(message, result); });
}

void CRun::Stop() {
  m_isStopping = true;
  Drive([this] { m_loop.Stop(); });
}

void CRun::Deliver() {
  m_loop.Deliver();
  DeliverRecovered();
  m_sumsDue = {};
  CountRepeated(false);
  if (!m_loop.IsRunning() || m_loop.IsPending()) return;
  Count();
  Tell(&CRunObserver::Counted, m_counts);
}

int CRun::Reload(const CRunPlan& plan) {
  m_reloadFault = "the run is not between two scans";
  if (!m_loop.IsRunning() || m_loop.IsPending()) return 0;
  m_reloadFault.Empty();
  const CInputConfig& input = plan.configuration.m_input;
  std::unique_ptr<CLogKeeper> before;  // if the configuration needs another one
  const bool isOther =
      m_pKeeper && !HasSamePolicy(PolicyFor(Configuration().m_input, m_options), PolicyFor(input, m_options));
  if (isOther) before = std::exchange(m_pKeeper, MakeKeeper(input));
  CString reopened;
  int result = 0;
  Drive([&] { result = ReloadStages(plan, reopened); });
  if (!result) {
    if (isOther) m_pKeeper = std::move(before);
    return 0;
  }
  if (isOther) EndKeeper(*before);
  const CStringArray names = SampleNames();
  m_plan = plan;
  Tell(&CRunObserver::Reloaded);
  if (!(names == SampleNames())) Tell(&CRunObserver::Renamed, SampleNames());
  Report(reopened);
  return 1;
}

// reopened gets the keys of the stages that were closed.
int CRun::ReloadStages(const CRunPlan& plan, CString& reopened) {
  EStage refused = EStage::none;
  CScanLoop::CReload reload = {Configuration(), plan.configuration, m_pKeeper.get()};
  reload.reopening = [&](EStage stage, const CConfiguration& next) {
    const bool isBack = &next == &reload.before;
    if (!isBack) reopened += (reopened.IsEmpty() ? "" : ", ") + CString(KeyOf(stage));
    if (stage != refused) EndLedgers(stage, isBack ? reload.after : reload.before);
    if (stage == EStage::outputs) m_outputLogs.SetSources(SourcesOf(next.m_outputs.m_outputs, "outputs"));
    if (stage == EStage::summaries)
      m_summaryLogs.SetSources(SourcesOf(next.m_summaries.m_summaries, "summaries"));
  };
  reload.refused = [&](EStage stage) {
    refused = stage;
    m_reloadFault = OpenFaultOf(plan.configuration);
    if (m_pKeeper) m_pKeeper->ClearOpenFault();  // the stages go back, and can fail for another reason
  };
  const int result = m_loop.Reload(reload);
  if (m_loop.IsRunning()) m_notReopened.clear();
  return result;
}

// Keeps the accounts of a stage that has closed.
void CRun::EndLedgers(EStage stage, const CConfiguration& configuration) {
  std::vector<CRunLedger> ended;
  m_notReopened.insert(stage);
  if (stage == EStage::outputs)
    AddLedgers(configuration.m_outputs.m_outputs, false, m_loop.Outputs().GetLedgers(), ended);
  if (stage == EStage::summaries)
    AddLedgers(configuration.m_summaries.m_summaries, true, m_loop.Summaries().GetLedgers(), ended);
  Merge(m_endedLedgers, ended);
}

// Of a keeper whose outputs and summaries are closed.
void CRun::EndKeeper(CLogKeeper& keeper) {
  ShowJournals(keeper.DeliverOthers(&m_recoveredLogs));
  AddOthers(keeper, m_endedLedgers);
}

// Says what was opened again, and what a healthy run says at its start.
void CRun::Report(const CString& reopened) {
  if (!m_options.reports) return;
  const CString line = "the configuration was loaded again: " +
                       (reopened.IsEmpty() ? CString("all stages stay open") : "opened again: " + reopened);
  Say({{}, severityNotice, functionOpen, "CRun", "Run", line.Std().c_str()});
  MakeReport();
  if (!reopened.IsEmpty()) m_pReport->Started(SampleNames());
}

std::vector<CRunLedger> CRun::Ledger() const {
  const auto present = [this](EStage stage, const auto& logs) {
    return m_notReopened.contains(stage) ? std::vector<CLogLedger>() : logs.GetLedgers();
  };
  std::vector<CRunLedger> all;
  AddLedgers(Configuration().m_outputs.m_outputs, false, present(EStage::outputs, m_loop.Outputs()), all);
  AddLedgers(Configuration().m_summaries.m_summaries, true, present(EStage::summaries, m_loop.Summaries()),
             all);
  Merge(all, m_endedLedgers);
  if (m_pKeeper) AddOthers(*m_pKeeper, all);
  return all;
}

// Calls action, which drives the loop, and reports the end of the scan or of the run.
template <class ACTION>
void CRun::Drive(ACTION action) {
  if (!m_loop.IsRunning()) return;
  action();
  if (m_loop.IsPending()) return;
  if (!m_loop.IsRunning()) DeliverRecovered();
  CountRepeated(true);
  PublishNodes();
  Count();
  Tell(&CRunObserver::Counted, m_counts);
  if (!m_loop.IsRunning()) Tell(&CRunObserver::Stopped);
}

// Passes a line of the run itself to the observers and shows it.
void CRun::Say(const CRunMessage& message) {
  CRunMessage timed = message;
  _ftime(timed.time);
  Tell(&CRunObserver::Message, timed);
  m_messenger.Say(timed);
}

void CRun::CountRepeated(bool isScanDone) {
  const auto say = [this](const CRunMessage& message) { Say(message); };
  m_repeated.Report(Time::clock::now(), isScanDone, say);
  if (!m_loop.IsRunning()) m_repeated.End(say);
}

// Closed stages have no progress: the last progress of the replay is kept. The accounts are copied seldom,
// since a copy allocates memory.
void CRun::Count() {
  m_counts.scans = m_loop.Counts();
  m_counts.fill = std::as_const(m_loop).Outputs().GetFill();
  if (const Time now = Time::clock::now(); now >= m_sumsDue || !m_loop.IsRunning()) {
    m_sumsDue = now + kSumsPause;
    auto ledger = std::make_shared<const std::vector<CRunLedger>>(Ledger());
    m_counts.kept = Sum(*ledger);
    m_pLive->SetLedger(std::move(ledger));
  }
  const CLogInput& input = m_loop.Input();
  const UINT logs = input.TotalFilesToRead();
  if (logs != 0)
    m_counts.replay = {logs, input.FilesRead(),
                       input.PercentCompleted() + input.PartOfLog() / static_cast<float>(logs)};
}

void CRun::PublishNodes() {
  const bool isRead = m_loop.Input().TakeNodeChange(), isWritten = m_loop.PlcWrite().TakeNodeChange();
  if (isRead || isWritten) m_pLive->SetNodes(m_loop.Input().NodeStates(), m_loop.PlcWrite().NodeStates());
}

// Called at the end of each scan that read a sample.
void CRun::Publish() {
  if (std::exchange(m_isRenamed, false)) Tell(&CRunObserver::Renamed, SampleNames());
  const CLogSample* sample = Trend().Newest();
  if (sample) Tell(&CRunObserver::Sampled, *sample);
}

CString CRun::Place() const {
  const CString output = m_outputLogs.PlaceOf(m_loop.Outputs().Place());
  return output.IsEmpty() ? m_summaryLogs.PlaceOf(m_loop.Summaries().Place()) : output;
}

// The read that finds the end of a replay is not a failure. The outer links report it as an Error, which is
// not shown. This function is called on the thread that reads, the only one that uses the input stage then.
bool CRun::TakeMessage(const char* linkType, const char* linkName, char function, char severity,
                       const char* text) {
  if (severity == severityError && function == functionRead && m_loop.Input().IsFinished()) return false;
  CRunMessage message = {{}, severity, function, linkType, linkName, text};
  _ftime(message.time);
  if (m_messenger.SpeaksToPeople() && !m_repeated.Take(message, Time::clock::now())) return false;
  Tell(&CRunObserver::Message, message);
  return true;
}

}  // namespace vastra
