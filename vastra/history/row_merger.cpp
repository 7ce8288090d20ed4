#include "vastra/history/row_merger.h"

#include <algorithm>
#include <new>

#include "vastra/history/catalogue.h"

namespace vastra {
namespace {

constexpr std::size_t kMostMemory = std::size_t{32} << 20;  // of the samples of all logs that are open
constexpr std::size_t kMostPiece = std::size_t{192} << 10;  // which the cache of a processor can hold
constexpr std::size_t kLeastPiece = std::size_t{4} << 10;

// Orders a heap whose top is the source with the earliest row; of equal ones the first log.
bool IsLater(std::list<CRowSource>::iterator a, std::list<CRowSource>::iterator b) {
  return a->Moment() == b->Moment() ? a->Order() > b->Order() : a->Moment() > b->Moment();
}

}  // namespace

CRowMerger::CRowMerger(const std::vector<CHistoryLog>& logs, CRowRequest request)
    : m_request(std::move(request)), m_current(m_sources.end()) {
  if (m_request.variables.empty()) m_request.variables = NamesOf(logs, m_request.range);
  for (std::size_t i = m_request.variables.size(); i-- > 0;)
    m_columns[m_request.variables[i]] = static_cast<std::int32_t>(i);
  for (std::size_t i = 0; i < logs.size(); ++i)
    if (logs[i].Meets(m_request.range)) AddLog(logs[i], i);
  std::sort(m_pending.begin(), m_pending.end(), [](const CPending& a, const CPending& b) {
    return a.first == b.first ? a.order > b.order : a.first > b.first;
  });
  m_mostBytes = std::clamp(kMostMemory / std::max<std::size_t>(1, MostTogether()), kLeastPiece, kMostPiece);
}

void CRowMerger::AddLog(const CHistoryLog& log, std::size_t order) {
  const CPlaces places = PlacesOf(log.names);
  if (!places) return;
  m_pending.push_back({std::max(log.first, m_request.range.from), order, &log, places});
  m_total += log.samples;
}

// Null for a log without any of the variables.
CPlaces CRowMerger::PlacesOf(const CSharedNames& names) {
  const auto [at, isNew] = m_places.try_emplace(names.get());
  if (!isNew) return at->second;
  std::vector<std::int32_t> places(m_request.variables.size(), -1);
  bool hasAny = false;
  for (std::size_t i = names->size(); i-- > 0;)  // of equal names the first one counts
    if (const auto column = m_columns.find((*names)[i]); column != m_columns.end()) {
      places[static_cast<std::size_t>(column->second)] = static_cast<std::int32_t>(i);
      hasAny = true;
    }
  if (hasAny) at->second = std::make_shared<const std::vector<std::int32_t>>(std::move(places));
  return at->second;
}

// How many logs are open at the same time at most.
std::size_t CRowMerger::MostTogether() const {
  std::vector<CMoment> ends;  // a heap of those that are open, the earliest on top
  std::size_t most = 0;
  for (auto pending = m_pending.rbegin(); pending != m_pending.rend(); ++pending) {
    while (!ends.empty() && ends.front() < pending->first) {
      std::pop_heap(ends.begin(), ends.end(), std::greater<>());
      ends.pop_back();
    }
    ends.push_back(pending->log->last);
    std::push_heap(ends.begin(), ends.end(), std::greater<>());
    most = std::max(most, ends.size());
  }
  return most;
}

// Without repeats, rows whose moments another log has as well are compared one by one.
bool CRowMerger::Next(CRowStretch& stretch) {
  while (Advance()) {
    const bool isCompared =
        m_request.isUnique && (m_current->Moment() >= m_limit || m_repeats.HasRowsAt(m_current->Moment()));
    m_current->Take(m_limit, isCompared ? 1 : UINT32_MAX, stretch);
    if (!isCompared || m_repeats.IsNew(stretch)) return true;
  }
  return false;
}

// Chooses the log of the next row.
bool CRowMerger::Advance() {
  if (m_current != m_sources.end()) {
    const CSources::iterator source = m_current;
    if (!source->Advance()) {
      End(source);
    } else {
      if (source->Moment() < m_limit) return true;
      m_waiting.push_back(source);
      std::push_heap(m_waiting.begin(), m_waiting.end(), IsLater);
    }
  }
  return Choose();
}

void CRowMerger::End(CSources::iterator source) {
  if (!source->Fault().IsEmpty()) m_faults.push_back({source->Log().path, source->Fault()});
  m_done += source->Log().samples;
  m_sources.erase(source);
}

// Opens the logs that can have the next row.
void CRowMerger::OpenPending() {
  while (!m_pending.empty() && (m_waiting.empty() || m_pending.back().first <= m_waiting.front()->Moment())) {
    const CPending pending = m_pending.back();
    m_pending.pop_back();
    m_sources.emplace_back(*pending.log, pending.order, pending.places, m_open, m_mostBytes);
    const CSources::iterator source = std::prev(m_sources.end());
    if (source->Open(m_request.range)) {
      m_waiting.push_back(source);
      std::push_heap(m_waiting.begin(), m_waiting.end(), IsLater);
    } else {
      End(source);
    }
  }
}

bool CRowMerger::Choose() {
  m_current = m_sources.end();
  OpenPending();
  if (m_waiting.empty()) return false;
  std::pop_heap(m_waiting.begin(), m_waiting.end(), IsLater);
  m_current = m_waiting.back();
  m_waiting.pop_back();
  m_limit = m_waiting.empty() ? kEndMoment : m_waiting.front()->Moment();
  if (!m_pending.empty()) m_limit = std::min(m_limit, m_pending.back().first);
  return true;
}

double CRowMerger::Progress() const {
  std::uint64_t done = m_done;
  for (const CRowSource& source : m_sources) done += source.Done();
  return m_total ? static_cast<double>(done) / static_cast<double>(m_total) : 1;
}

}  // namespace vastra
