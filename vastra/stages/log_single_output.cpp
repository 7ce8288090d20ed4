#include "vastra/stages/log_single_output.h"

#include "vastra/core/mapper_link.h"
#include "vastra/stages/chain.h"

namespace vastra {
namespace {

std::unique_ptr<CFileConfig> FileConfig(const COutputConfig& options) {
  std::unique_ptr<CFileConfig> config = LogConfig(options, ".rph");
  config->m_maxLogs = options.m_maxLogs;
  config->m_nameVariable = options.m_nameVariable;
  config->m_dwordName = options.m_dwordName;
  config->m_prefix = options.m_prefix;
  config->m_usePrefix = options.m_usePrefix;
  return config;
}

}  // namespace

int CLogSingleOutput::Open(CStringArray& names) {
  if (m_open) Close();
  m_account.Begin();
  m_enable.GetOptions()->m_equations = m_options.m_enableEquations;
  if (!m_enable.Open(names)) return 0;
  if (WritesFiles()) {
    CChain chain;
    CFileLink* file = chain.Add(CFileLink::Create(nullptr), "OutputFileLink", FileConfig(m_options));
    file->SetLogListener(m_pListener, m_listenerLog);
    file->SetLogKeeper(m_pKeeper, false);
    // Without a mapper repeated names keep their own values, and a log of all variables needs one copy of the
    // sample less.
    if (!(names == m_options.m_varNames))
      chain.Add(CMapperLink::Create(chain.Pass()), "OutputMapperLink", NameConfig(names));
    m_pHeadLink = chain.Open(CLink::modeWrite);
    if (!m_pHeadLink) return 0;
    m_pFileLink = file;
  }
  m_open = 1;
  return 1;
}

void CLogSingleOutput::Close() {
  if (m_pFileLink) m_pKeeper ? m_pFileLink->EndKept() : static_cast<void>(Restart());
  m_account.End(m_pFileLink);
  m_enable.Close();
  delete m_pHeadLink;
  m_pHeadLink = nullptr;
  m_pFileLink = nullptr;
  m_open = 0;
}

int CLogSingleOutput::Pass(CLogSample& sample) {
  if (!Verify(sample)) return m_account.Refuse(), 0;
  if (RestartLog()) Restart();
  if (!WriteToLog() || !m_pFileLink) return m_account.Refuse(), 1;
  return m_account.Pass(*m_pFileLink, sample.m_time, [&] { return Write(sample); });
}

int CLogSingleOutput::Restart() {
  if (!m_open) return 0;
  return m_pFileLink ? m_pFileLink->Flush() : 1;
}

int CLogSingleOutput::Write(CLogSample& sample) {
  if (!m_open) return 0;
  return m_pHeadLink ? m_pHeadLink->Write(sample) : 1;
}

}  // namespace vastra
