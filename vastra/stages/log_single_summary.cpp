#include "vastra/stages/log_single_summary.h"

#include "vastra/config/output_config.h"
#include "vastra/stages/chain.h"

namespace vastra {
namespace {

std::unique_ptr<CFileConfig> ArchiveConfig(const CSummaryConfig& options) {
  std::unique_ptr<CFileConfig> config = LogConfig(options, ".rpd");
  config->m_maxLogs = options.m_maxSummaries;
  config->m_nameVariable = kSystemTime;
  return config;
}

}  // namespace

int CLogSingleSummary::Open(CStringArray& names) {
  if (m_open) Close();
  m_account.Begin();
  m_enable.GetOptions()->m_equations = m_options.m_enableEquations;
  if (!m_enable.Open(names)) return 0;
  if (WritesFiles() && !OpenChains(names)) return 0;
  m_open = 1;
  return 1;
}

bool CLogSingleSummary::OpenChains(const CStringArray& names) {
  CChain archive, equations;  // on failure the equations are deleted first
  CFileLink* const buffer = AddEquations(equations, "SummaryEquatorLink", "SummaryBufferFileLink", names,
                                         m_options.m_summaryEquations, m_options.m_varNames);
  CFileLink* const file =
      archive.Add(CFileLink::Create(nullptr), "SummaryArchiveFileLink", ArchiveConfig(m_options));
  file->SetLogListener(m_pListener, m_listenerLog);
  file->SetLogKeeper(m_pKeeper, true);
  if (!equations.OpenHere(CLink::modeWrite) || !archive.OpenHere(CLink::modeWrite)) return false;
  m_pEquatorLink = equations.TakeHead().release();
  m_pBufferLink = buffer;
  static_cast<void>(archive.TakeHead().release());
  m_pArchiveLink = file;
  return true;
}

void CLogSingleSummary::Close() {
  if (m_pArchiveLink) m_pKeeper ? m_pArchiveLink->EndKept() : static_cast<void>(Restart());
  m_account.End(m_pArchiveLink);
  m_enable.Close();
  delete m_pEquatorLink;
  m_pEquatorLink = nullptr;
  m_pBufferLink = nullptr;
  delete m_pArchiveLink;
  m_pArchiveLink = nullptr;
  m_open = 0;
}

int CLogSingleSummary::AddToSummary(CLogSample& sample) {
  if (!m_open) return 0;
  return m_pEquatorLink ? m_pEquatorLink->Write(sample) : 1;
}

int CLogSingleSummary::Flush() {
  if (!m_open) return 0;
  if (!m_pArchiveLink) return m_account.Refuse(), 1;
  const auto write = [this] { return m_pBufferLink->Read(m_row) && m_pArchiveLink->Write(m_row); };
  return m_account.Pass(*m_pArchiveLink, m_row.m_time, write) && m_pArchiveLink->PartialFlush();
}

int CLogSingleSummary::Restart() {
  if (!m_open) return 0;
  return m_pArchiveLink ? m_pArchiveLink->Flush() : 1;
}

}  // namespace vastra
