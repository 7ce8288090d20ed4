#include "host/desktop/attached_logger.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "host/common/configuration_json.h"
#include "host/run/feed_source.h"

namespace vastra {
namespace {

constexpr double kLongestKnownPeriod = 1e9;      // of scans that is believed, in milliseconds
constexpr std::int64_t kMostReplayed = 100'000;  // logs that are believed
constexpr const char *kRunning = "running", *kStopped = "stopped";

// The words of the feed that differ from those of the main window.
constexpr std::pair<std::string_view, const char*> kRunWords[] = {{"opening", "starting"},
                                                                  {"waiting", "waiting to start"}};

CString WordOfState(const std::string& state) {
  const auto* known = std::ranges::find(kRunWords, state, &std::pair<std::string_view, const char*>::first);
  return known == std::end(kRunWords) ? CString(state) : CString(known->second);
}

CStringArray ArrayOf(const std::vector<std::string>& texts) {
  CStringArray array;
  for (const std::string& text : texts) array.Add(CString(text));
  return array;
}

UINT LimitOf(std::uint64_t limit) {
  return static_cast<UINT>(std::min<std::uint64_t>(limit, std::numeric_limits<UINT>::max()));
}

template <class CONFIG>
void SetLog(CONFIG& config, UINT& maxLogs, const CStageFacts& facts) {
  config.m_name = CString(facts.name);
  config.m_directory = CString(facts.folder);
  config.m_saveRp = facts.binary;
  config.m_saveCsv = facts.text;
  if (facts.maxLogs) maxLogs = LimitOf(*facts.maxLogs);
  if (facts.maxSamples) config.m_maxSamples = LimitOf(*facts.maxSamples);
}

void SetInput(CInputConfig& input, const CHelloLine& hello) {
  input.m_simulating = hello.nodes.empty() && hello.replayed > 0;
  for (std::int64_t i = 0; i < std::min(hello.replayed, kMostReplayed); ++i) input.m_inputFiles.AddTail({});
  for (std::size_t i = 0; i < hello.nodes.size(); ++i) {
    auto node = std::make_unique<CPlcNodeConfig>();
    node->m_nodeName = CString(hello.nodes[i]);
    if (i < hello.origins.size()) {
      node->m_varNames = ArrayOf(hello.origins[i].variables);
      node->m_aliveVar = CString(hello.origins[i].alive);
    }
    input.m_plcNodes.AddTail(node.release());
  }
}

CConfiguration ConfigurationOf(const CHelloLine& hello, std::chrono::milliseconds period) {
  CConfiguration configuration;
  SetInput(configuration.m_input, hello);
  configuration.m_input.m_scanPeriod = LimitOf(static_cast<std::uint64_t>(period.count()));
  configuration.m_input.m_asFastAsPossible = period.count() == 0;
  for (const CStageFacts& facts : hello.outputs) {
    auto output = std::make_unique<COutputConfig>();
    SetLog(*output, output->m_maxLogs, facts);
    configuration.m_outputs.m_outputs.AddTail(output.release());
  }
  for (const CStageFacts& facts : hello.summaries) {
    auto summary = std::make_unique<CSummaryConfig>();
    SetLog(*summary, summary->m_maxSummaries, facts);
    configuration.m_summaries.m_summaries.AddTail(summary.release());
  }
  for (const std::string& name : hello.writes) {
    auto node = std::make_unique<CPlcSingleConfig>();
    node->m_node.m_nodeName = CString(name);
    configuration.m_plcWrite.m_nodes.AddTail(node.release());
  }
  if (hello.smart) configuration.m_smart.m_inputVars.Add({});  // which the feed does not name
  for (const CUnitFacts& facts : hello.units)
    configuration.m_variables[CString(facts.variable)].m_unit = CString(facts.unit);
  return configuration;
}

std::vector<CNodeState> StatesOf(const std::vector<CNodeFacts>& nodes) {
  std::vector<CNodeState> states;
  states.reserve(nodes.size());
  for (const CNodeFacts& node : nodes)
    states.push_back({.name = CString(node.name),
                      .isUp = node.up,
                      .since = node.since,
                      .reason = CString(node.reason),
                      .next = node.next,
                      .hasAnswered = node.answered});
  return states;
}

}  // namespace

CAttachedLogger::CChange CAttachedLogger::Take(const CHelloLine& hello) {
  const double period = hello.period > 0 ? std::min(hello.period, kLongestKnownPeriod) : 0;
  const CStringArray names = ArrayOf(hello.variables);
  CChange change;
  change.isOther = !(hello.started == m_hello.started);
  // A logger that starts has no variables yet; the present ones stay until it has.
  change.hasNames = !names.IsEmpty() && (change.isOther || !(names == m_names));
  m_run.period =
      std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double, std::milli>(period));
  CConfiguration configuration = ConfigurationOf(hello, m_run.period);
  change.hasParts = m_hello.feed == 0 || !IsSame(m_configuration, configuration);
  m_configuration = std::move(configuration);
  m_hello = hello;
  if (!change.hasNames) return change;
  m_names = names;
  m_live->Started(names);
  m_statistics.Started(names);
  return change;
}

void CAttachedLogger::Take(const CStateLine& state) {
  m_run.isRunning = state.state == kRunning;
  m_run.isStopped = state.state == kStopped;
  m_run.word = WordOfState(state.state);
  m_run.startFault = state.state == "waiting" ? CString(state.reason) : CString();
  m_run.isRunning ? m_statistics.GoesOn() : m_statistics.Stopped();
  m_live->SetNodes(StatesOf(state.nodes), StatesOf(state.writes));
  // A reader that is slow misses lines about logs, and the state line has them all, unless they are very
  // many.
  std::vector<CString> unsaved;
  for (const CUnsavedFacts& log : state.unsaved) unsaved.emplace_back(log.path);
  if (unsaved.size() < CFeedSaves::kMostUnsaved) m_live->KeepUnsaved(unsaved);
  for (const CUnsavedFacts& log : state.unsaved)
    m_live->LogNotSaved(
        {CString(log.log), {}},
        {.log = 0, .path = CString(log.path), .reason = CString(log.reason), .samples = log.rows});
  if (state.lastSample) m_sample.m_time = *state.lastSample;
}

bool CAttachedLogger::Take(const CSampleLine& sample) {
  m_sample.m_time = sample.time;
  if (sample.values.size() != static_cast<std::size_t>(m_names.GetSize()) || m_names.IsEmpty()) return false;
  m_sample.m_values.SetSize(m_names.GetSize());
  std::ranges::copy(sample.values, m_sample.m_values.begin());
  m_live->Sampled(m_sample);
  m_statistics.Sampled(m_sample);
  return true;
}

void CAttachedLogger::Take(const CCountsLine& counts) {
  CRunCounts run;
  run.scans.read = counts.read;
  run.scans.failedReads = counts.failedReads;
  run.scans.late = counts.late;
  run.scans.failedWrites = {counts.failedWrites.smart, counts.failedWrites.outputs,
                            counts.failedWrites.summaries, counts.failedWrites.plcWrite,
                            counts.failedWrites.trend};
  std::vector<CRunLedger> ledgers;
  for (const CLedgerFacts& facts : counts.ledger)
    ledgers.push_back({CString(facts.name), facts.isSummary, facts.ledger});
  m_run.keepsLogs = !ledgers.empty();
  m_live->SetLedger(std::make_shared<const std::vector<CRunLedger>>(std::move(ledgers)));
  m_live->Counted(run);
}

void CAttachedLogger::Take(const CLogLine& log) {
  const CLogSource source = {CString(log.log), CString(log.name)};
  if (!log.isClosed)
    return m_live->LogNotSaved(
        source, {.log = 0, .path = CString(log.path), .reason = CString(log.reason), .samples = log.rows});
  m_live->LogClosed(source, {.log = 0,
                             .path = CString(log.path),
                             .first = log.first.value_or(_timeb()),
                             .last = log.last.value_or(_timeb()),
                             .samples = log.rows});
}

void CAttachedLogger::Lost() {
  m_run.isRunning = false;
  m_run.isStopped = true;
  m_run.word = "not connected";
  m_run.startFault.Empty();
  m_statistics.Stopped();
}

}  // namespace vastra
