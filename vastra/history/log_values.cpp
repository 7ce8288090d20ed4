#include "vastra/history/log_values.h"

#include <algorithm>
#include <cerrno>

#include "vastra/history/log_scan.h"

namespace vastra {
namespace {

constexpr const char* kChanged = "was replaced by another log after it was listed";

// Whether all records have the count of their run.
bool HaveCount(const char* records, std::uint32_t count, const CRecordRun& run) {
  char expected[kLongCountSize];
  const auto size = static_cast<std::size_t>(PutCount(expected, run.values) - expected);
  const std::size_t step = run.RecordSize();
  if (size == kShortCountSize) {
    std::uint32_t other = 0;
    for (std::uint32_t i = 0; i < count; ++i, records += step) {
      std::uint16_t values;
      std::memcpy(&values, records, sizeof values);
      other |= values ^ run.values;
    }
    return other == 0;
  }
  for (std::uint32_t i = 0; i < count; ++i, records += step)
    if (std::memcmp(records, expected, size) != 0) return false;
  return true;
}

}  // namespace

void COpenLogs::Add(CLogValues* log) {
  m_logs.push_back(log);
  if (m_logs.size() > kMostOpen) m_logs.front()->m_pFile.reset(), m_logs.pop_front();
}

void COpenLogs::Remove(CLogValues* log) { std::erase(m_logs, log); }

std::vector<char> COpenLogs::TakeMemory() {
  if (m_memory.empty()) return {};
  std::vector<char> memory = std::move(m_memory.back());
  m_memory.pop_back();
  return memory;
}

void COpenLogs::GiveMemory(std::vector<char>&& memory) {
  if (!memory.empty() && m_memory.size() < kMostKept) m_memory.push_back(std::move(memory));
}

CLogValues::CLogValues(const CHistoryLog& log, COpenLogs& open)
    : m_log(log), m_open(open), m_status(log.status), m_layout(log.layout) {}

void CLogValues::Close() {
  if (m_pFile) m_open.Remove(this);
  m_pFile.reset();
  m_open.GiveMemory(std::move(m_records));
  m_records = {};
  m_times = {};
  m_journal = {};
}

bool CLogValues::Fail(const CString& fault) {
  m_fault = fault;
  return false;
}

bool CLogValues::FailRead() {
  return Fail(m_pFile->Error() ? m_pFile->Fault() : CString("was cut after it was listed"));
}

bool CLogValues::NeedFile() {
  if (m_pFile) return true;
  auto file = std::make_unique<CProbedFile>(m_log.path);
  if (!file->IsOpen())
    return Fail(file->Error() == ENOENT ? CString("was removed after it was listed") : file->Fault());
  m_pFile = std::move(file);
  m_open.Add(this);
  return m_pFile->Status() == m_status || Renew();
}

// The file was written since the log was listed. Looks at the file that is open: its path can have a newer
// one.
bool CLogValues::Renew() {
  CNamesPool pool;
  const CHistoryLog now = LookAtLog(m_log.path, *m_pFile, pool);
  if (!now.fault.IsEmpty()) return Fail(now.fault);
  if (*now.names != *m_log.names || now.samples < m_log.samples || now.start != m_log.start)
    return Fail(kChanged);
  m_status = now.status;
  m_layout = now.layout;
  return true;
}

bool CLogValues::CountRecords() {
  auto layout = std::make_shared<CLogLayout>();
  const std::uint64_t times = m_layout->times;
  CString fault;
  if (!m_layout->isAssumed) return Fail(kChanged);
  if (!ReadLogLayout(*m_pFile, ERecords::counted, *layout, fault)) return Fail(fault);
  if (layout->times != times) return Fail("has counts that contradict its size");
  m_layout = std::move(layout);
  return true;
}

void CLogValues::IndexJournal() {
  if (!m_journal.empty()) return;
  m_journal.reserve(m_log.samples);
  CSampleRecord record;
  for (CSampleSpan span : m_log.journal->spans)
    while (span.GetNext(record)) m_journal.push_back(record);
}

bool CLogValues::ReadTimes(std::uint32_t first, std::uint32_t count, _timeb* times) {
  if (m_log.isJournal) {
    IndexJournal();
    for (std::uint32_t i = 0; i < count; ++i) times[i] = m_journal[first + i].m_time;
    return true;
  }
  const std::size_t size = sizeof(_timeb);
  return NeedFile() &&
         (m_pFile->Read(times, count * size, m_layout->times + first * std::uint64_t{size}) || FailRead());
}

bool CLogValues::Find(CMoment moment, std::uint32_t& index) {
  std::uint32_t begin = 0, end = Count();
  if (moment <= m_log.first) end = 0;
  if (moment > m_log.last) begin = end;
  while (begin < end) {
    const std::uint32_t middle = begin + (end - begin) / 2;
    _timeb time;
    if (!ReadTimes(middle, 1, &time)) return false;
    if (MomentOf(time) < moment)
      begin = middle + 1;
    else
      end = middle;
  }
  index = begin;
  return true;
}

const CRecordRun& CLogValues::RunOf(std::uint32_t index, std::uint32_t& end) const {
  const std::vector<CRecordRun>& runs = m_layout->runs;
  const auto next = std::upper_bound(runs.begin(), runs.end(), index,
                                     [](std::uint32_t i, const CRecordRun& run) { return i < run.first; });
  end = next == runs.end() ? m_layout->samples : next->first;
  return *(next - 1);
}

bool CLogValues::Load(std::uint32_t first, std::uint32_t count, std::size_t mostBytes,
                      CLoadedSamples& samples) {
  if (!m_log.isJournal) return LoadFromFile(first, count, mostBytes, samples);
  IndexJournal();
  const CSampleRecord& record = m_journal[first];
  samples = {1, &record.m_time, record.m_values - SizeOfCount(record.m_count), 0, record.m_count};
  return true;
}

bool CLogValues::LoadFromFile(std::uint32_t first, std::uint32_t count, std::size_t mostBytes,
                              CLoadedSamples& samples) {
  if (!NeedFile()) return false;
  std::uint32_t end = 0;
  const CRecordRun& run = RunOf(first, end);
  const std::size_t size = run.RecordSize();
  const std::size_t fit = std::max<std::size_t>(1, mostBytes / (size + sizeof(_timeb)));
  const auto part = static_cast<std::uint32_t>(std::min<std::size_t>({count, end - first, fit}));
  if (m_records.empty()) m_records = m_open.TakeMemory();
  if (m_records.size() < part * size) m_records.resize(part * size);
  if (m_times.size() < part) m_times.resize(part);
  if (!m_pFile->Read(m_records.data(), part * size, run.place + (first - run.first) * std::uint64_t{size}))
    return FailRead();
  if (!HaveCount(m_records.data(), part, run))
    return CountRecords() && LoadFromFile(first, count, mostBytes, samples);
  samples = {part, m_times.data(), m_records.data(), size, run.values};
  return ReadTimes(first, part, m_times.data());
}

}  // namespace vastra
