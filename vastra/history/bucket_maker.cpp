#include "vastra/history/bucket_maker.h"

#include <algorithm>

#include "vastra/history/catalogue.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr std::size_t kCachedBytes = std::size_t{20}
                                     << 10;  // of rows, which stay near while each variable is added
constexpr std::size_t kBlockBytes = std::size_t{1} << 20;  // of a block of samples that is read at once

__extension__ using CWide = unsigned __int128;  // products of two numbers of 64 bits

// Leaves the rows of the stretch from first on.
void Skip(CRowStretch& stretch, std::uint32_t first) {
  stretch.times += first;
  stretch.values += first * stretch.step;
  stretch.count -= first;
}

// The number of rows whose moments are before moment.
std::uint32_t CountBefore(const CRowStretch& stretch, CMoment moment) {
  const _timeb* end = stretch.times + stretch.count;
  if (MomentOf(end[-1]) < moment) return stretch.count;
  const auto isBefore = [moment](const _timeb& time) { return MomentOf(time) < moment; };
  return static_cast<std::uint32_t>(std::partition_point(stretch.times, end, isBefore) - stretch.times);
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
  std::vector<const CHistoryLog*> wanted, cluster;
  for (const CHistoryLog& log : logs)
    if (log.Meets(m_request.range) && !PlacesOf(log).empty()) wanted.push_back(&log);
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

// Empty for a log without any of the variables.
const CBucketMaker::CPlaceList& CBucketMaker::PlacesOf(const CHistoryLog& log) {
  const auto [at, isNew] = m_lists.try_emplace(log.names.get());
  if (!isNew) return at->second;
  std::map<CString, std::int32_t> known;  // of equal names the first one counts
  for (std::size_t i = log.names->size(); i-- > 0;) known[(*log.names)[i]] = static_cast<std::int32_t>(i);
  CPlaceList places;
  for (const CString& name : m_request.variables) places.push_back(known.contains(name) ? known[name] : -1);
  const bool hasAny =
      std::any_of(places.begin(), places.end(), [](std::int32_t place) { return place >= 0; });
  if (hasAny) at->second = std::move(places);
  return at->second;
}

// Clusters that follow each other and have no digest are one span.
void CBucketMaker::AddSpan(std::vector<const CHistoryLog*>& cluster) {
  if (cluster.empty()) return;
  const CHistoryLog& log = *cluster[0];
  CDigestReader* digest =
      cluster.size() == 1 && m_request.useDigests && log.isOrdered ? DigestOf(log) : nullptr;
  if (const CDigestLog* entry = digest ? digest->Find(log) : nullptr) {
    m_spans.push_back({&log, digest, entry, {}});
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
  const CBucketSpan& span = m_spans.front();
  if (span.digested)
    OpenDigested(span);
  else
    m_rows = std::make_unique<CRowMerger>(
        span.logs, CRowRequest{m_request.range, m_request.variables, m_request.isUnique});
  return true;
}

void CBucketMaker::OpenDigested(const CBucketSpan& span) {
  const CHistoryLog& log = *span.digested;
  m_log = std::make_unique<CLogValues>(log, m_open);
  m_places = &PlacesOf(log);
  m_nextBlock = 0;
  m_nextSample = m_endSample = 0;
  m_isWhole =
      HasTotal(log.samples) && IsInPart(log.first, log.last) && FindColumns(span, &CDigestReader::Total);
  if (m_isWhole) return;
  m_moments = span.digest->Moments(*span.entry);
  if (!FindColumns(span, &CDigestReader::Blocks)) m_moments = nullptr;
}

// The entries of the variables in the digest. False: it is damaged.
bool CBucketMaker::FindColumns(const CBucketSpan& span,
                               const CDigestBlock* (CDigestReader::*find)(const CDigestLog&, std::size_t)) {
  m_columns.clear();
  for (const std::int32_t place : *m_places) {
    const auto variable = static_cast<std::size_t>(place);
    m_columns.push_back(place < 0 ? nullptr : (span.digest->*find)(*span.entry, variable));
    if (place >= 0 && !m_columns.back()) return false;
  }
  return true;
}

CBucketMaker::EItem CBucketMaker::NextItem() {
  for (;;) {
    if (m_request.isStopped && m_request.isStopped()) return EItem::none;
    if (!m_rows && !m_log && !OpenSpan()) return EItem::none;
    const EItem item = m_rows ? NextRows() : NextBlock();
    if (item != EItem::none) return item;
    m_spans.pop_front();
  }
}

CBucketMaker::EItem CBucketMaker::NextRows() {
  if (m_rows->Next(m_stretch)) {
    m_moment = MomentOf(m_stretch.times[0]);
    return EItem::rows;
  }
  m_faults.insert(m_faults.end(), m_rows->Faults().begin(), m_rows->Faults().end());
  m_rows.reset();
  return EItem::none;
}

CBucketMaker::EItem CBucketMaker::NextBlock() {
  if (m_isWhole && m_nextBlock++ == 0) {
    m_moment = m_log->Log().first;
    return EItem::blocks;
  }
  while (!m_isWhole) {
    if (const EItem rows = NextLoaded(); rows != EItem::none) return rows;
    if (m_nextBlock == BlocksOf(m_log->Count())) break;
    m_block = m_nextBlock++;
    if (IsBlockInPart(m_block)) {
      m_moment = m_moments[m_block];
      return EItem::blocks;
    }
    m_nextSample = m_block * kBlockSamples;
    m_endSample = std::min(m_nextSample + kBlockSamples, m_log->Count());
  }
  m_log.reset();
  return EItem::none;
}

// Whether rows with these moments are in one part of the range.
bool CBucketMaker::IsInPart(CMoment first, CMoment last) const {
  const CMomentRange& range = m_request.range;
  if (m_part.Has(first) && m_part.Has(last)) return true;
  return range.Has(first) && range.Has(last) && m_parts.IndexOf(first) == m_parts.IndexOf(last);
}

// Whether all rows of the block are in one part of the range, and the digest can be read.
bool CBucketMaker::IsBlockInPart(std::uint32_t block) const {
  if (!m_moments) return false;
  const CHistoryLog& log = m_log->Log();
  return IsInPart(m_moments[block], block + 1 == BlocksOf(log.samples) ? log.last : m_moments[block + 1]);
}

// The next rows of a block that is read from the log.
CBucketMaker::EItem CBucketMaker::NextLoaded() {
  while (m_nextSample < m_endSample) {
    CLoadedSamples loaded;
    if (!m_log->Load(m_nextSample, m_endSample - m_nextSample, kBlockBytes, loaded)) {
      m_faults.push_back({m_log->Log().path, m_log->Fault()});
      m_nextSample = m_endSample;
      m_nextBlock = BlocksOf(m_log->Count());
      break;
    }
    m_nextSample += loaded.count;
    m_stretch = {loaded.count,      loaded.times,  loaded.records + SizeOfCount(loaded.values),
                 loaded.recordSize, loaded.values, m_places->data(),
                 &m_log->Log()};
    Skip(m_stretch, CountBefore(m_stretch, m_request.range.from));
    if (m_stretch.count) m_stretch.count = CountBefore(m_stretch, m_request.range.to);
    if (m_stretch.count == 0) continue;
    m_moment = MomentOf(m_stretch.times[0]);
    return EItem::rows;
  }
  return EItem::none;
}

bool CBucketMaker::Next(CBucketPart& part) {
  if (m_item == EItem::none) return false;
  std::fill(m_buckets.begin(), m_buckets.end(), CBucket());
  part.index = m_parts.IndexOf(m_moment);
  m_part = {m_parts.BeginOf(part.index), m_parts.BeginOf(part.index + 1)};
  part.from = m_part.from;
  part.to = m_part.to;
  part.rows = 0;
  do part.rows += AddItem();
  while (m_item != EItem::none && m_part.Has(m_moment));
  part.buckets = m_buckets;
  return true;
}

// Adds the item, or the rows of it that are in the part, to the buckets, and moves on to what follows.
// Returns the number of its rows.
std::uint64_t CBucketMaker::AddItem() {
  const std::uint64_t rows = m_item == EItem::blocks ? AddBlocks() : AddRows();
  if (m_item == EItem::rows && m_stretch.count > 0)
    m_moment = MomentOf(m_stretch.times[0]);
  else
    m_item = NextItem();
  return rows;
}

std::uint64_t CBucketMaker::AddRows() {
  const std::uint32_t rows = CountBefore(m_stretch, m_part.to);
  const auto most = static_cast<std::uint32_t>(kCachedBytes / std::max<std::size_t>(m_stretch.step, 1) + 1);
  for (std::uint32_t left = rows; left > 0;) {
    const std::uint32_t some = std::min(left, most);
    for (std::size_t i = 0; i < m_buckets.size(); ++i)
      if (const auto place = static_cast<std::uint32_t>(m_stretch.places[i]); place < m_stretch.valueCount)
        m_buckets[i].Add(m_stretch.values + place * sizeof(float), m_stretch.step, some);
    Skip(m_stretch, some);
    left -= some;
  }
  return rows;
}

// The whole log; or the block, and those after it that are in the part, too.
std::uint64_t CBucketMaker::AddBlocks() {
  if (m_isWhole) m_block = 0;
  while (!m_isWhole && m_nextBlock < BlocksOf(m_log->Count()) && IsBlockInPart(m_nextBlock) &&
         m_part.Has(m_moments[m_nextBlock]))
    ++m_nextBlock;
  for (std::size_t i = 0; i < m_buckets.size(); ++i)
    for (std::uint32_t block = m_block; m_columns[i] && block < m_nextBlock; ++block)
      m_buckets[i].Add(m_columns[i][block].Bucket());
  if (m_isWhole) return m_log->Count();
  return std::min(m_nextBlock * kBlockSamples, m_log->Count()) - m_block * kBlockSamples;
}

double CBucketMaker::Progress() const {
  if (m_allSpans == 0) return 1;
  const double part = m_rows ? m_rows->Progress() : 0;
  return (static_cast<double>(m_allSpans - m_spans.size()) + part) / static_cast<double>(m_allSpans);
}

}  // namespace vastra
