#include "vastra/stages/log_multi_summary.h"

#include "vastra/stages/single_stages.h"

namespace vastra {

int CLogMultiSummary::Open(CStringArray& names) {
  if (m_open) Close();
  m_open = OpenSingles(m_summaries, m_options.m_summaries, names, [this](auto& single, int log) {
    single.SetLogListener(m_pListener, log);
    single.SetLogKeeper(m_pKeeper);
  });
  return m_open;
}

int CLogMultiSummary::Write(CLogSample& sample) {
  if (!m_open) return 0;
  for (CLogSingleSummary* summary : m_summaries) {
    if (!summary->Verify(sample) || !summary->IsSampleValid()) return 0;
    if (summary->RestartSummary()) summary->Restart();
    if (!summary->AddToSummary(sample)) return 0;
    if (summary->WriteToSummary() && !summary->Flush()) return 0;
  }
  return 1;
}

int CLogMultiSummary::Restart() {
  if (!m_open) return 0;
  RestartSingles(m_summaries);
  return 1;
}

void CLogMultiSummary::Deliver() {
  for (auto* single : m_summaries) single->Deliver();
}

std::vector<CLogLedger> CLogMultiSummary::GetLedgers() const {
  return m_open ? LedgersOf(m_summaries) : m_ledgers;
}

void CLogMultiSummary::Close() {
  CloseSingles(m_summaries, m_ledgers);
  m_open = 0;
}

}  // namespace vastra
