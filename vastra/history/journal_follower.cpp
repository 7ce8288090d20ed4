#include "vastra/history/journal_follower.h"

#include <algorithm>
#include <cerrno>

namespace vastra {
namespace {

// The samples of store without the first skip ones.
std::shared_ptr<const CJournalSamples> TakeSamples(const std::shared_ptr<CSampleStore>& store,
                                                   std::uint64_t skip) {
  auto samples = std::make_shared<CJournalSamples>();
  CSampleStore::CPlace place = store->GetHeadPlace();
  CSampleRecord record;
  for (std::uint64_t i = 0; i < skip; ++i) store->GetNext(place, record);
  store->AddSpans(place, samples->spans);
  samples->store = store;
  return samples;
}

}  // namespace

CJournalFollower::CJournalFollower(const CString& path) : m_path(path) {
  m_log.path = path;
  m_log.isJournal = true;
  if (m_file.Open(path, CFile::modeRead)) {
    Follow();
    return;
  }
  m_isEmpty = errno == ENOENT;
  m_fault = CFileException(path, errno).Text();
}

bool CJournalFollower::IsOther(const CFileStatus& status) const {
  return !m_file.IsOpen() || status.device != m_status.device || status.inode != m_status.inode;
}

void CJournalFollower::Reset() {
  m_store = std::make_shared<CSampleStore>();
  m_content = {};
  m_made = m_skipped = 0;
  m_log.names = nullptr;
}

bool CJournalFollower::Follow() {
  CFileStatus status;
  if (!m_file.IsOpen()) return false;
  if (!m_file.GetStatus(status)) {
    m_fault = CFileException(m_path, errno).Text();
    return true;
  }
  if (m_store && status.size == m_status.size) return false;
  if (!m_store || status.size < m_content.goodBytes) Reset();
  m_status = status;
  const int isRead = ReadJournalOn(m_file, m_content, *m_store);
  m_fault = m_content.fault;
  m_isEmpty = m_content.isHeadTorn;
  if (!isRead) Reset();
  return true;
}

std::optional<CString> CJournalFollower::LogFile() const {
  if (!m_store || !m_content.Log()) return std::nullopt;
  return m_content.head.naming.FileOf(m_content.Log()->name, ELogForm::binary);
}

std::uint64_t CJournalFollower::SamplesIn(const CHistoryLog& log, CNamesPool& pool) const {
  const std::uint64_t before = m_content.GoesOn() ? m_content.head.continues->samples : 0;
  if (log.names != pool.Get(m_content.head.varNames) || log.samples == 0 || log.samples < before) return 0;
  if (log.start != m_content.Log()->first) return 0;
  return std::min<std::uint64_t>(log.samples - before, Samples());
}

CHistoryLog CJournalFollower::MakeLog(std::uint64_t skip, CNamesPool& pool) {
  m_log.fault = m_fault;
  m_log.status = m_status;
  m_log.size = m_status.size;
  if (!m_fault.IsEmpty() || !m_store) {
    m_log.samples = 0;
    return m_log;
  }
  if (m_log.names && m_made == Samples() && m_skipped == skip) return m_log;
  m_log.journal = TakeSamples(m_store, skip);
  m_log.names = pool.Get(m_content.head.varNames);
  m_log.samples = Samples() - skip;
  CTimesSpan span;
  for (const CSampleSpan& part : m_log.journal->spans) span.Add(part.m_times, part.m_count);
  span.PutTo(m_log);
  if (m_log.samples) m_log.start = m_log.journal->spans[0].m_times[0];
  m_made = Samples();
  m_skipped = skip;
  return m_log;
}

}  // namespace vastra
