#include "vastra/stages/single_enable.h"

#include "vastra/core/truncate.h"
#include "vastra/stages/chain.h"

namespace vastra {

CLogSingleEnable::CLogSingleEnable() : CSingleEnable(kLogFlags) {}
CSummarySingleEnable::CSummarySingleEnable() : CSingleEnable(kSummaryFlags) {}

int CSingleEnable::Open(CStringArray& names) {
  if (m_open) Close();
  CStringArray flags;
  for (const char* flag : m_flags) flags.Add(flag);
  CChain chain;
  CFileLink* const buffer =
      AddEquations(chain, "EnableEquatorLink", "EnableFileLink", names, m_options.m_equations, flags);
  m_pHeadLink = chain.Open(CLink::modeWrite);
  if (!m_pHeadLink) return 0;
  m_pFileLink = buffer;
  m_open = 1;
  return 1;
}

void CSingleEnable::Close() {
  delete m_pHeadLink;
  m_pHeadLink = nullptr;
  m_pFileLink = nullptr;
  m_open = 0;
}

int CSingleEnable::Verify(CLogSample& sample) { return m_open ? m_pHeadLink->Write(sample) : 0; }

int CSingleEnable::Flag(int place) {
  if (!m_open || !m_pFileLink->Read(m_answer) || place >= m_answer.m_values.GetSize()) return 0;
  return TruncateToInt(m_answer.m_values[place]);
}

}  // namespace vastra
