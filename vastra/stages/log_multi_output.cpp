#include "vastra/stages/log_multi_output.h"

#include "vastra/stages/single_stages.h"

namespace vastra {

int CLogMultiOutput::Open(CStringArray& names) {
  if (m_open) Close();
  m_open = OpenSingles(m_outputs, m_options.m_outputs, names, [this](auto& single, int log) {
    single.SetLogListener(m_pListener, log);
    single.SetLogKeeper(m_pKeeper);
  });
  return m_open;
}

int CLogMultiOutput::Write(CLogSample& sample) {
  if (!m_open) return 0;
  for (CLogSingleOutput* output : m_outputs)
    if (!output->Pass(sample)) return 0;
  return 1;
}

int CLogMultiOutput::Restart() {
  if (!m_open) return 0;
  RestartSingles(m_outputs);
  return 1;
}

CFill CLogMultiOutput::GetFill() const {
  CFill fill;
  for (const CLogSingleOutput* output : m_outputs) fill += output->GetFill();
  return fill;
}

void CLogMultiOutput::Deliver() {
  for (auto* single : m_outputs) single->Deliver();
}

std::vector<CLogLedger> CLogMultiOutput::GetLedgers() const {
  return m_open ? LedgersOf(m_outputs) : m_ledgers;
}

void CLogMultiOutput::Close() {
  CloseSingles(m_outputs, m_ledgers);
  m_open = 0;
}

}  // namespace vastra
