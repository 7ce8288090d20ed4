#include "vastra/stages/log_multi_output.h"

#include "vastra/stages/single_stages.h"

namespace vastra {

int CLogMultiOutput::Open(CStringArray& names) {
  if (m_open) Close();
  m_open = OpenSingles(m_outputs, m_options.m_outputs, names, m_place, [this](auto& single, int log) {
    single.SetLogListener(m_pListener, log);
    single.SetLogKeeper(m_pKeeper);
  });
  return m_open;
}

int CLogMultiOutput::Write(CLogSample& sample) {
  if (!m_open) return 0;
  return ForEach(m_outputs, m_place, [&sample](CLogSingleOutput& output) { return output.Pass(sample); });
}

int CLogMultiOutput::Restart() {
  if (!m_open) return 0;
  RestartSingles(m_outputs, m_place);
  return 1;
}

CFill CLogMultiOutput::GetFill() const {
  CFill fill;
  for (const CLogSingleOutput* output : m_outputs) fill += output->GetFill();
  return fill;
}

void CLogMultiOutput::Deliver() {
  ForEach(m_outputs, m_place, [](auto& single) { return single.Deliver(), 1; });
}

std::vector<CLogLedger> CLogMultiOutput::GetLedgers() const {
  return m_open ? LedgersOf(m_outputs) : m_ledgers;
}

void CLogMultiOutput::Close() {
  CloseSingles(m_outputs, m_place, m_ledgers);
  m_open = 0;
}

}  // namespace vastra
