#include "vastra/history/bucket_maker.h"

#include <algorithm>

#include "vastra/history/catalogue.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;  // of a block of samples that is read at once

__extension__ using CWide = unsigned __int128;  // products of two numbers of 64 bits

bool HasAny(const CHistoryLog& log, const std::vector<CString>& variables) {
  return std::any_of(variables.begin(), variables.end(), [&](const CString& name) {
    return std::find(log.names->begin(), log.names->end(), name) != log.names->end();
  });
}

}  // namespace

// Part i begins at floor(i * length / count), so the part of a moment at distance d from the beginning is the
// last i for which i * length < (d + 1) * count.
std::uint64_t CParts::IndexOf(CMoment moment) const {
  const auto length = static_cast<std::uint64_t>(m_range.to - m_range.from);
  const auto after = static_cast<std::uint64_t>(moment - m_range.from) + 1;
  return static_cast<std::uint64_t>((CWide{after} * m_count - 1) / length);
}

CMoment CParts::BeginOf(std::uint64_t index) const {
  const auto length = static_cast<std::uint64_t>(m_range.to - m_range.from);
  return m_range.from + static_cast<CMoment>(CWide{index} * length / m_count);
}

CBucketMaker::CBucketMaker(const std::vector<CHistoryLog>& logs, CBucketRequest request)
    : m_request(std::move(request)), m_parts(m_request.range, m_request.parts) {
  if (m_request.variables.empty()) m_request.variables = NamesOf(logs, m_request.range);
  m_buckets.resize(m_request.variables.size());
  if (m_request.range.from < m_request.range.to) MakeSpans(logs);
  m_allSpans = m_spans.size();
  m_item = NextItem();
}

// Logs that overlap in time are one cluster.
void CBucketMaker::MakeSpans(const std::vector<CHistoryLog>& logs) {
  std::map<const void*, bool> known;  // by list of names
  std::vector<const CHistoryLog*> wanted, cluster;
  for (const CHistoryLog& log : logs) {
    if (!log.Meets(m_request.range)) continue;
    const auto [at, isNew] = known.try_emplace(log.names.get());
    if (isNew) at->second = HasAny(log, m_request.variables);
    if (at->second) wanted.push_back(&log);
  }
  std::stable_sort(wanted.begin(), wanted.end(),
                   [](const CHistoryLog* a, const CHistoryLog* b) { return a->first < b->first; });
  CMoment last = kFirstMoment;
  for (const CHistoryLog* log : wanted) {
    if (log->first > last) AddSpan(cluster);
    last = std::max(last, log->last);
    cluster.push_back(log);
  }
  AddSpan(cluster);
}

// Clusters that follow each other and have no digest are one span.
void CBucketMaker::AddSpan(std::vector<const CHistoryLog*>& cluster) {
  if (cluster.empty()) return;
  const CHistoryLog& log = *cluster[0];
  CDigestReader* digest =
      cluster.size() == 1 && m_request.useDigests && log.isOrdered ? DigestOf(log) : nullptr;
  if (digest && digest->Find(log)) {
    m_spans.push_back({&log, {}});
  } else {
    if (m_spans.empty() || m_spans.back().digested) m_spans.emplace_back();
    std::sort(cluster.begin(), cluster.end());  // in the order of the catalogue, whose logs are in an array
    for (const CHistoryLog* one : cluster) m_spans.back().logs.push_back(*one);
  }
  cluster.clear();
}

CDigestReader* CBucketMaker::DigestOf(const CHistoryLog& log) {
  const CString folder = DirectoryOf(log.path);
  const auto [at, isNew] = m_digests.try_emplace(folder);
  if (isNew) at->second = CDigestReader::Open(folder);
  return at->second.get();
}

bool CBucketMaker::OpenSpan() {
  if (m_spans.empty()) return false;
  CBucketSpan& span = m_spans.front();
  if (span.digested)
    OpenDigested(*span.digested);
  else
    m_rows = std::make_unique<CRowMerger>(
        span.logs, CRowRequest{m_request.range, m_request.variables, m_request.isUnique});
  return true;
}

void CBucketMaker::OpenDigested(const CHistoryLog& log) {
  m_log = std::make_unique<CLogValues>(log, m_open);
  m_pDigest = DigestOf(log);
  m_pEntry = m_pDigest->Find(log);
  m_moments = m_pDigest->Moments(*m_pEntry);
  m_places.clear();
  m_columns.clear();
  for (const CString& name : m_request.variables) {
    const auto at = std::find(log.names->begin(), log.names->end(), name);
    const bool isThere = at != log.names->end();
    m_places.push_back(isThere ? static_cast<std::int32_t>(at - log.names->begin()) : -1);
    m_columns.push_back(isThere ? m_pDigest->Blocks(*m_pEntry, static_cast<std::size_t>(m_places.back()))
                                : nullptr);
    if (isThere && !m_columns.back()) m_moments = nullptr;  // the digest is damaged
  }
  m_nextBlock = 0;
  m_nextSample = m_endSample = 0;
  m_loaded.count = m_shown = 0;
}

CBucketMaker::EItem CBucketMaker::NextItem() {
  for (;;) {
    if (!m_rows && !m_log && !OpenSpan()) return EItem::none;
    const EItem item = m_rows ? NextRow() : NextBlock();
    if (item != EItem::none) return item;
    m_spans.pop_front();
  }
}

CBucketMaker::EItem CBucketMaker::NextRow() {
  if (m_rows->Next(m_row)) {
    m_moment = m_row.moment;
    return EItem::row;
  }
  m_faults.insert(m_faults.end(), m_rows->Faults().begin(), m_rows->Faults().end());
  m_rows.reset();
  return EItem::none;
}

CBucketMaker::EItem CBucketMaker::NextBlock() {
  for (;;) {
    if (const EItem row = NextLoaded(); row != EItem::none) return row;
    const std::uint32_t blocks = BlocksOf(m_log->Log().samples);
    if (m_nextBlock == blocks) break;
    const std::uint32_t block = m_nextBlock++;
    if (IsBlockInPart(block)) {
      m_block = block;
      m_moment = m_moments[block];
      return EItem::block;
    }
    m_nextSample = block * kBlockSamples;
    m_endSample = std::min(m_nextSample + kBlockSamples, m_log->Count());
  }
  m_log.reset();
  return EItem::none;
}

// Whether all rows of the block are in one part of the range, and the digest can be read.
bool CBucketMaker::IsBlockInPart(std::uint32_t block) const {
  if (!m_moments) return false;
  const CMomentRange& range = m_request.range;
  const CHistoryLog& log = m_log->Log();
  const CMoment first = m_moments[block];
  const CMoment last = block + 1 == BlocksOf(log.samples) ? log.last : m_moments[block + 1];
  if (m_part.Has(first) && m_part.Has(last)) return true;
  return range.Has(first) && range.Has(last) && m_parts.IndexOf(first) == m_parts.IndexOf(last);
}

// The next row of a block that is read from the log.
CBucketMaker::EItem CBucketMaker::NextLoaded() {
  for (;;) {
    if (m_shown == m_loaded.count) {
      if (m_nextSample == m_endSample) return EItem::none;
      if (!m_log->Load(m_nextSample, m_endSample - m_nextSample, kBlockBytes, m_loaded)) {
        m_faults.push_back({m_log->Log().path, m_log->Fault()});
        m_nextSample = m_endSample = m_shown = m_loaded.count = 0;
        m_nextBlock = BlocksOf(m_log->Log().samples);
        return EItem::none;
      }
      m_nextSample += m_loaded.count;
      m_shown = 0;
    }
    const std::uint32_t i = m_shown++;
    m_moment = MomentOf(m_loaded.times[i]);
    if (!m_request.range.Has(m_moment)) continue;
    m_row.moment = m_moment;
    m_row.values = m_loaded.records + i * m_loaded.recordSize + SizeOfCount(m_loaded.values);
    m_row.count = m_loaded.values;
    m_row.places = m_places.data();
    return EItem::row;
  }
}

bool CBucketMaker::Next(CBucketPart& part) {
  if (m_item == EItem::none) return false;
  std::fill(m_buckets.begin(), m_buckets.end(), CBucket());
  part.index = m_parts.IndexOf(m_moment);
  m_part = {m_parts.BeginOf(part.index), m_parts.BeginOf(part.index + 1)};
  part.from = m_part.from;
  part.to = m_part.to;
  part.rows = 0;
  do {
    part.rows += AddItem();
    m_item = NextItem();
  } while (m_item != EItem::none && m_part.Has(m_moment));
  part.buckets = m_buckets;
  return true;
}

// Adds the item to the buckets and returns its number of rows.
std::uint64_t CBucketMaker::AddItem() {
  if (m_item == EItem::block) return AddBlock();
  float value;
  for (std::size_t i = 0; i < m_buckets.size(); ++i)
    if (m_row.Get(i, value)) m_buckets[i].Add(value);
  return 1;
}

std::uint64_t CBucketMaker::AddBlock() {
  for (std::size_t i = 0; i < m_buckets.size(); ++i)
    if (m_columns[i]) m_buckets[i].Add(m_columns[i][m_block].Bucket());
  return std::min(kBlockSamples, m_log->Count() - m_block * kBlockSamples);
}

double CBucketMaker::Progress() const {
  if (m_allSpans == 0) return 1;
  const double part = m_rows ? m_rows->Progress() : 0;
  return (static_cast<double>(m_allSpans - m_spans.size()) + part) / static_cast<double>(m_allSpans);
}

}  // namespace vastra
