#include "vastra/stages/log_trendings.h"

#include "vastra/stages/chain.h"

namespace vastra {
namespace {

CStringArray Joined(CStringArray names, const CStringArray& more) {
  names.Append(more);
  return names;
}

}  // namespace

int CLogTrendings::Open(CStringArray& names) {
  if (m_open) Close();
  CChain chain;
  CFileLink* const buffer = chain.Add(CFileLink::Create(nullptr), "TrendingsFileLink",
                                      BufferConfig(Joined(names, m_pOptions->m_extraVars)));
  if (m_pOptions->m_calculateExtra)
    chain.Add(CEquatorLink::Create(chain.Pass()), "TrendingsEquatorLink",
              EquatorConfig(names, m_pOptions->m_equations,
                            Joined(m_pOptions->m_baseVars, m_pOptions->m_extraVars)));
  m_pHeadLink = chain.Open(CLink::modeWrite);
  if (!m_pHeadLink) return 0;
  m_pFileLink = buffer;
  m_open = 1;
  return 1;
}

void CLogTrendings::Close() {
  delete m_pHeadLink;
  m_pHeadLink = nullptr;
  m_pFileLink = nullptr;
  m_open = 0;
}

int CLogTrendings::Write(CLogSample& sample) { return m_open ? m_pHeadLink->Write(sample) : 0; }

const CLogSample* CLogTrendings::Newest() const { return m_open ? &m_pFileLink->LastSample() : nullptr; }

int CLogTrendings::Read(CLogSample* sample) { return m_open && m_pFileLink->Read(*sample) > 0; }

}  // namespace vastra
