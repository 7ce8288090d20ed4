#include "vastra/stages/log_multi_summary.h"

#include "vastra/stages/single_stages.h"

namespace vastra {

int CLogMultiSummary::Open(CStringArray& names) {
  if (m_open) Close();
  m_open = OpenSingles(m_summaries, m_options.m_summaries, names, m_place, [this](auto& single, int log) {
    single.SetLogListener(m_pListener, log);
    single.SetLogKeeper(m_pKeeper);
  });
  return m_open;
}

int CLogMultiSummary::Write(CLogSample& sample) {
  if (!m_open) return 0;
  return ForEach(m_summaries, m_place, [&sample](CLogSingleSummary& summary) {
    if (!summary.Verify(sample) || !summary.IsSampleValid()) return 0;
    if (summary.RestartSummary()) summary.Restart();
    if (!summary.AddToSummary(sample)) return 0;
    return !summary.WriteToSummary() || summary.Flush() ? 1 : 0;
  });
}

int CLogMultiSummary::Restart() {
  if (!m_open) return 0;
  RestartSingles(m_summaries, m_place);
  return 1;
}

void CLogMultiSummary::Deliver() {
  ForEach(m_summaries, m_place, [](auto& single) { return single.Deliver(), 1; });
}

std::vector<CLogLedger> CLogMultiSummary::GetLedgers() const {
  return m_open ? LedgersOf(m_summaries) : m_ledgers;
}

void CLogMultiSummary::Close() {
  CloseSingles(m_summaries, m_place, m_ledgers);
  m_open = 0;
}

}  // namespace vastra
