#include "host/run/feed.h"

#include <functional>
#include <utility>

#include "host/common/key_path.h"
#include "host/run/feed_server.h"
#include "host/run/feed_source.h"
#include "host/run/run.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {
namespace {

CFeedNames Shared(const CStringArray& names) {
  return std::make_shared<const std::vector<CString>>(names.begin(), names.end());
}

CString NodeName(const CPlcNodeConfig& node) {
  const CDriverFactory& drivers = *CDriverFactory::Instance();
  const int driver = drivers.GetDriverIndex(node.m_driver.plcType);
  return node.m_nodeName.IsEmpty() && driver >= 0 ? drivers.GetDriverName(driver) : node.m_nodeName;
}

UINT MostLogs(const COutputConfig& output) { return output.m_maxLogs; }
UINT MostLogs(const CSummaryConfig& summary) { return summary.m_maxSummaries; }

template <class CONFIG>
std::vector<CFeedFacts::CLog> LogsOf(const CList<CONFIG*, CONFIG*>& configs, const char* list) {
  std::vector<CFeedFacts::CLog> logs;
  for (const CONFIG* config : configs)
    logs.push_back({KeyPath(list, static_cast<int>(logs.size())), config->m_name, config->m_directory,
                    Shared(config->m_varNames), config->m_saveRp != 0, config->m_saveCsv != 0,
                    MostLogs(*config), config->m_maxSamples});
  return logs;
}

void AddInput(const CInputConfig& input, CFeedFacts& facts) {
  if (input.m_simulating) return void(facts.replayed = input.m_inputFiles.GetCount());
  for (const CPlcNodeConfig* node : input.m_plcNodes) {
    facts.nodes.push_back(NodeName(*node));
    facts.origins.push_back({Shared(node->m_varNames), node->m_aliveVar});
  }
}

std::shared_ptr<const CFeedFacts> FactsOf(const CRun& run) {
  const CConfiguration& configuration = run.Configuration();
  const auto facts = std::make_shared<CFeedFacts>();
  facts->period = run.Period().count();
  AddInput(configuration.m_input, *facts);
  for (const CPlcSingleConfig* single : configuration.m_plcWrite.m_nodes)
    facts->writes.push_back(NodeName(single->m_node));
  facts->outputs = LogsOf(configuration.m_outputs.m_outputs, "outputs");
  facts->summaries = LogsOf(configuration.m_summaries.m_summaries, "summaries");
  facts->isSmart = UsesSmart(configuration.m_smart);
  for (const auto& [name, note] : configuration.m_variables)
    if (!note.m_unit.IsEmpty()) facts->units.emplace_back(name, note.m_unit);
  return facts;
}

CFeedNames VariablesOf(const CFeedFacts& facts, const CLogSource& source) {
  for (const auto* list : {&facts.outputs, &facts.summaries})
    for (const CFeedFacts::CLog& log : *list)
      if (log.key == source.key) return log.variables;
  return nullptr;
}

// Replaces the saves by a copy with the change; a copy needs no lock, since only the run's thread changes
// them.
void ChangeSaves(CFeedSource& source, const std::function<void(CFeedSaves&)>& change) {
  const auto saves = std::make_shared<CFeedSaves>(*source.View().saves);
  change(*saves);
  source.Change([&](CFeedSource::CView& view) { view.saves = saves; });
}

}  // namespace

CFeed::CFeed(const CFeedPlace& place) : m_place(place), m_pSource(std::make_unique<CFeedSource>()) {
  m_pSource->Change([](CFeedSource::CView& view) {
    view.facts = std::make_shared<const CFeedFacts>();
    view.saves = std::make_shared<const CFeedSaves>();
  });
  SetState(EFeedState::opening);
}

CFeed::~CFeed() {
  if (m_pSource->View().status->state != EFeedState::stopped) SetState(EFeedState::stopped);
}

CString CFeed::Open() {
  m_pServer = std::make_unique<CFeedServer>(*m_pSource, m_place);
  CString fault = m_pServer->Open();
  if (!fault.IsEmpty()) m_pServer.reset();
  return fault;
}

void CFeed::Attach(CRun& run) {
  Detach();
  m_pRun = &run;
  run.AddObserver(this);
  const auto facts = FactsOf(run);
  const auto live = run.LiveState();
  m_pSource->Change([&](CFeedSource::CView& view) {
    ++view.change;
    view.facts = facts;
    view.live = live;
  });
  if (m_pSource->View().status->state != EFeedState::waiting) SetState(EFeedState::opening);
}

void CFeed::Wait(const CString& reason) {
  Detach();
  SetState(EFeedState::waiting, reason);
}

// The newest sample outlives its run.
void CFeed::Detach() {
  m_pRun = nullptr;
  CLiveNewest newest;
  const CFeedSource::CView former = m_pSource->View();
  const bool isCopied = former.live && former.live->CopyNewest(newest);
  m_pSource->Change([&](CFeedSource::CView& view) {
    ++view.change;
    if (isCopied && newest.read.time_since_epoch().count() != 0) view.last = {newest.time, newest.read};
    view.live.reset();
    view.names.reset();
  });
}

// A state that stays only gets its new reason.
void CFeed::SetState(EFeedState state, const CString& reason) {
  const auto before = m_pSource->View().status;
  const auto status = std::make_shared<CFeedStatus>(CFeedStatus{state, {}, reason});
  if (before && before->state == state)
    status->since = before->since;
  else
    _ftime(status->since);
  m_pSource->Change([&](CFeedSource::CView& view) { view.status = status; });
}

// On the thread of the run: its configuration may have changed.
void CFeed::Describe() {
  if (!m_pRun) return;
  const auto facts = FactsOf(*m_pRun);
  CLiveNewest newest;
  m_pRun->LiveState()->CopyNewest(newest);
  m_pSource->Change([&](CFeedSource::CView& view) {
    ++view.change;
    view.facts = facts;
    view.names = newest.names;
  });
}

void CFeed::Started(const CStringArray&) {
  Describe();
  SetState(EFeedState::running);
}

void CFeed::Renamed(const CStringArray&) { Describe(); }

void CFeed::Message(const CRunMessage& message) {
  const auto entry = m_pSource->m_messages.Add(
      {message.time, message.severity, message.function, message.link, message.name, message.text});
  if (message.severity == severityFatal || message.severity == severityError)
    m_pSource->Change([&](CFeedSource::CView& view) { view.lastError = entry; });
}

void CFeed::LogClosed(const CLogSource& source, const CSavedLog& log) {
  m_pSource->m_logs.Add({source,
                         log.path,
                         {},
                         log.samples,
                         true,
                         log.first,
                         log.last,
                         VariablesOf(*m_pSource->View().facts, source)});
  ChangeSaves(*m_pSource, [&](CFeedSaves& saves) {
    ++saves.closed;
    saves.unsaved.erase(log.path);
  });
}

// A summary that could not be saved may be saved with its next row.
void CFeed::LogGrew(const CLogSource&, const CSavedLog& log) {
  if (!m_pSource->View().saves->unsaved.contains(log.path)) return;
  ChangeSaves(*m_pSource, [&](CFeedSaves& saves) { saves.unsaved.erase(log.path); });
}

void CFeed::LogNotSaved(const CLogSource& source, const CUnsavedLog& log) {
  m_pSource->m_logs.Add({source, log.path, log.reason, log.samples, false, {}, {}, nullptr});
  ChangeSaves(*m_pSource, [&](CFeedSaves& saves) {
    ++saves.failed;
    if (saves.unsaved.size() < CFeedSaves::kMostUnsaved || saves.unsaved.contains(log.path))
      saves.unsaved[log.path] = {source.key, log.reason, log.samples};
  });
}

}  // namespace vastra
