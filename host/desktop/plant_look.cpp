#include "host/desktop/plant_look.h"

#include <algorithm>

#include "host/common/shown_text.h"
#include "host/desktop/plant_words.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kFreshest{2};  // an age that is never stale
constexpr int kStalePeriods = 3;              // of scans

std::int64_t Milliseconds(const _timeb& time) { return 1000 * std::int64_t{time.time} + time.millitm; }

}  // namespace

// By EPart.
const CPlantLook::Judge CPlantLook::kJudges[] = {
    &CPlantLook::JudgeInput,       &CPlantLook::JudgeNode,  &CPlantLook::JudgeStage, &CPlantLook::JudgeGroup,
    &CPlantLook::JudgeLog,         &CPlantLook::JudgeGroup, &CPlantLook::JudgeLog,   &CPlantLook::JudgeGroup,
    &CPlantLook::JudgeWrittenNode, &CPlantLook::JudgeStage};

CPlantLook::CPlantLook(CPlantState& state, const CPlantRun& run, const CLiveNewest& newest,
                       const CPlantNow& now)
    : m_state(state), m_run(run), m_newest(newest), m_now(now), m_hasSample(newest.number > 0) {
  if (!m_hasSample) return;
  m_age = std::chrono::floor<seconds>(now.steady - newest.read);
  m_isOld = run.isRunning && !state.m_isReplay && IsStale(now.steady - newest.read);
}

bool CPlantLook::IsStale(std::chrono::steady_clock::duration age) const {
  return age > std::max<std::chrono::steady_clock::duration>(kFreshest, kStalePeriods * m_run.period);
}

// The row of a stage depends on those under it.
void CPlantLook::JudgeAll() {
  for (const bool isChild : {true, false})
    for (CPlantRow& row : m_state.m_rows)
      if (row.IsChild() == isChild) {
        row.isStale = false;
        (this->*kJudges[static_cast<std::size_t>(row.part)])(row);
      }
  JudgeStart();
  JudgeSaving();
}

// Whether the run is not running, which then is the state of row.
bool CPlantLook::IsIdle(CPlantRow& row) const {
  if (m_run.isRunning) return false;
  Set(row, m_run.isStopped ? ECondition::off : ECondition::waiting, m_run.word);
  return true;
}

// Returns whether the user has not acknowledged it.
bool CPlantLook::Report(const CPlantRow& row, const CString& kind, EWeight weight, const CString& text) {
  const CString identity = kind + " " + row.Key();
  m_problems.push_back({identity, weight, IndexOf(row), text});
  return !m_state.m_acknowledged.contains(identity);
}

// While the run is stopped, the time of the value says more than its age.
void CPlantLook::ShowAge(CPlantRow& row, std::optional<seconds> age, const _timeb& time, bool isStale) const {
  if (!age)
    row.lastValue = m_run.isRunning ? "none yet" : "";
  else if (m_run.isStopped)
    row.lastValue = ClockText(time, m_now.wall);
  else
    row.lastValue = AgeText(*age) + (isStale ? " (old)" : "");
  row.isStale = isStale;
}

void CPlantLook::ShowSampleAge(CPlantRow& row) const { ShowAge(row, m_age, m_newest.time, m_isOld); }

std::uint64_t CPlantLook::FailuresOf(EPart part) const {
  const CScanCounts& scans = m_newest.counts.scans;
  const std::pair<EPart, std::uint64_t> counts[] = {
      {EPart::input, scans.failedReads},
      {EPart::smart, scans.failedWrites.smart},
      {EPart::outputs, scans.failedWrites.outputs},
      {EPart::summaries, scans.failedWrites.summaries},
      {EPart::plcWrite, scans.failedWrites.plcWrite},
      {EPart::trend, scans.failedWrites.trend},
  };
  const auto* found = std::ranges::find(counts, part, &std::pair<EPart, std::uint64_t>::first);
  return found == std::end(counts) ? 0 : found->second;
}

// The failures so far are part of the state; those of the last seconds make it worse.
void CPlantLook::AddFailures(CPlantRow& row) {
  const std::uint64_t failures = FailuresOf(row.part);
  CRisingCount& rising = m_state.m_failures[static_cast<std::size_t>(row.part)];
  rising.Note(failures, m_now.steady);
  if (failures == 0) return;
  if (m_run.isRunning && row.condition < ECondition::away && rising.HasJustRisen(m_now.steady))
    Set(row, ECondition::failed, "failed");
  AppendItem(row.state,
             CString(Counted(failures, row.part == EPart::input ? "failed read" : "failed write")));
}

void CPlantLook::JudgeStage(CPlantRow& row) {
  if (!IsIdle(row))
    Set(row, m_hasSample ? ECondition::good : ECondition::waiting,
        m_hasSample ? WordOf(ECondition::good) : "no sample yet");
  AddFailures(row);
}

// The worst condition of the rows under row, and how many have it.
void CPlantLook::SumUp(CPlantRow& row) {
  std::size_t all = 0, worst = 0;
  ECondition condition = ECondition::off;
  for (std::size_t i = IndexOf(row) + 1; i < m_state.m_rows.size() && m_state.m_rows[i].IsChild(); ++i) {
    const ECondition other = m_state.m_rows[i].condition;
    ++all;
    if (other > condition) condition = other, worst = 0;
    if (other == condition) ++worst;
  }
  if (all == 0) return Set(row, ECondition::off, "none");
  CString state = WordOf(condition);
  if (condition == ECondition::off) state = m_state.m_rows[IndexOf(row) + 1].state;
  if (worst < all && condition > ECondition::good)
    state = NumberText(worst) + " of " + NumberText(all) + " " + state;
  Set(row, condition, state);
}

void CPlantLook::JudgeGroup(CPlantRow& row) {
  const bool hasRows = IndexOf(row) + 1 < m_state.m_rows.size() && m_state.m_rows[IndexOf(row) + 1].IsChild();
  SumUp(row);
  if (hasRows && row.condition < ECondition::away) IsIdle(row);
  AddFailures(row);
}

void CPlantLook::JudgeInput(CPlantRow& row) {
  ShowSampleAge(row);
  row.rows = m_newest.counts.scans.read ? NumberText(m_newest.counts.scans.read) : CString();
  SumUp(row);
  const bool isAway = row.condition == ECondition::away;
  if (IsIdle(row) || isAway) return AddFailures(row);
  if (!m_hasSample)
    Set(row, ECondition::waiting, "no sample yet");
  else if (m_isOld)
    Set(row, ECondition::failed, "no sample for " + AgeText(*m_age));
  else if (row.condition <= ECondition::good)
    Set(row, ECondition::good, m_state.m_isReplay ? "plays" : WordOf(ECondition::good));
  if (m_isOld) Report(row, "old", EWeight::warning, "The input has no sample for " + AgeText(*m_age));
  AddFailures(row);
}

// States come in the order of the nodes, but a node that was not asked yet has none.
const CNodeState* CPlantLook::StateOf(const CPlantRow& row) const {
  const auto& states = row.part == EPart::node ? m_newest.nodes : m_newest.written;
  if (!states) return nullptr;
  const auto nodes = std::ranges::count(m_state.m_rows, row.part, &CPlantRow::part);
  if (static_cast<std::size_t>(nodes) == states->size())
    return &(*states)[static_cast<std::size_t>(row.index)];
  const auto named = std::ranges::find(*states, row.name, &CNodeState::name);
  return named == states->end() ? nullptr : &*named;
}

void CPlantLook::ShowAwayNode(CPlantRow& row, const CNodeState& node) {
  const seconds age(std::max<std::int64_t>(0, (Milliseconds(m_now.wall) - Milliseconds(node.since)) / 1000));
  ShowAge(row, node.hasAnswered ? std::optional(age) : std::nullopt, node.since, IsStale(age));
  if (IsIdle(row)) return;
  CString state = "away since " + ClockText(node.since, m_now.wall) + Because(node.reason);
  if (node.next) state += "; next attempt " + ClockText(*node.next, m_now.wall);
  Set(row, ECondition::away, state);
  Report(row, "away", EWeight::warning, "The " + row.Called() + " is " + state);
}

// Without workers of nodes only the samples say whether a node answers.
void CPlantLook::JudgeNode(CPlantRow& row) {
  const CNodeState* node = StateOf(row);
  if (node && !node->isUp) return ShowAwayNode(row, *node);
  ShowSampleAge(row);
  if (IsIdle(row)) return;
  if (!m_hasSample) return Set(row, ECondition::waiting, "no value yet");
  if (m_isOld) return Set(row, ECondition::waiting, "no answer for " + AgeText(*m_age));
  Set(row, ECondition::good, WordOf(ECondition::good));
}

void CPlantLook::JudgeWrittenNode(CPlantRow& row) {
  const CNodeState* node = StateOf(row);
  if (!m_run.noWriting.IsEmpty()) {
    row.lastValue.Empty();
    return Set(row, ECondition::off, m_run.noWriting);
  }
  if (node && !node->isUp) return ShowAwayNode(row, *node);
  ShowSampleAge(row);
  if (IsIdle(row)) return;
  Set(row, m_hasSample ? ECondition::good : ECondition::waiting,
      m_hasSample ? WordOf(ECondition::good) : "nothing written yet");
}

// The part with the longest key that the fault begins with has failed.
void CPlantLook::JudgeStart() {
  const CString& fault = m_run.startFault;
  if (fault.IsEmpty() || m_state.m_rows.empty()) return;
  CPlantRow* failed = nullptr;
  for (CPlantRow& row : m_state.m_rows)
    if (fault.Find(row.Key()) == 0 && (!failed || row.Key().GetLength() > failed->Key().GetLength()))
      failed = &row;
  if (failed) Set(*failed, ECondition::failed, ShortText(fault));
  Report(failed ? *failed : m_state.m_rows.front(), "start", EWeight::error,
         "The logger did not start" + Because(fault));
}

void CPlantLook::JudgeSaving() {
  const auto& rows = m_state.m_rows;
  if (!m_state.m_hasInput || std::ranges::any_of(rows, &CPlantRow::savesFiles)) return;
  const auto outputs = std::ranges::find(rows, EPart::outputs, &CPlantRow::part);
  if (outputs != rows.end())
    Report(*outputs, "saves nothing", EWeight::note, "No output saves anything: the samples are only shown");
}

}  // namespace vastra
