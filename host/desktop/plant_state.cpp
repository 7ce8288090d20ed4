#include "host/desktop/plant_state.h"

#include <algorithm>

#include "host/desktop/plant_look.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kJustNow{5};     // a failure is shown so long
constexpr std::chrono::seconds kLongPause{60};  // after it a failure is another one

}  // namespace

void CRisingCount::Note(std::uint64_t count, Time now) {
  if (count > m_count) {
    if (m_times == 0 || now - m_last > kLongPause) ++m_times;
    m_last = now;
  }
  m_count = count;
}

bool CRisingCount::HasJustRisen(Time now) const { return m_times > 0 && now - m_last < kJustNow; }

void CPlantState::SetConfiguration(const CConfiguration& configuration, int inputVariables) {
  m_rows = RowsOf(configuration, inputVariables);
  m_isReplay = configuration.m_input.m_simulating != 0;
  m_hasInput = m_isReplay || !configuration.m_input.m_plcNodes.IsEmpty();
  m_problems.clear();
  m_acknowledged.clear();
  m_failures = {};
  m_losses.assign(m_rows.size(), {});
}

void CPlantState::SetTrend(const CTrendConfig& trend) {
  if (!m_rows.empty()) m_rows.back().what = TrendWords(trend);
}

void CPlantState::Look(const CPlantRun& run, const CLiveNewest& newest, const CPlantNow& now) {
  CPlantLook look(*this, run, newest, now);
  look.JudgeAll();
  m_problems = look.TakeProblems();
  KeepAcknowledged(now.steady);
  std::ranges::stable_sort(m_problems, std::ranges::greater(), &CPlantProblem::weight);
}

// Forgets an acknowledgement when its problem has been away for long, and leaves the others out of the list.
void CPlantState::KeepAcknowledged(Time now) {
  for (const CPlantProblem& problem : m_problems)
    if (const auto known = m_acknowledged.find(problem.identity); known != m_acknowledged.end())
      known->second = now;
  for (auto& [identity, last] : m_acknowledged)
    if (last == Time()) last = now;  // acknowledged since the last look
  std::erase_if(m_acknowledged, [&](const auto& entry) { return now - entry.second > kLongPause; });
  std::erase_if(m_problems, [&](const auto& problem) { return m_acknowledged.contains(problem.identity); });
}

void CPlantState::Acknowledge(const CString& identity) {
  m_acknowledged[identity] = {};
  std::erase_if(m_problems, [&](const auto& problem) { return problem.identity == identity; });
}

}  // namespace vastra
