#include "vastra/charts/live_samples.h"

#include <algorithm>
#include <limits>

namespace vastra {
namespace {

constexpr std::size_t kPieceBytes = std::size_t{64} << 10;

}  // namespace

CMomentRange AddedBetween(const CLiveHead& before, const CLiveHead& now) {
  if (now.end == before.end) return {0, 0};
  // After a step back the samples can be anywhere before the latest one.
  if (now.backSteps != before.backSteps) return {kFirstMoment, now.lastMoment + 1};
  return {before.newestMoment, now.newestMoment + 1};
}

void CLiveSamples::Begin(std::vector<CString> names) {
  const std::size_t width = names.size();
  const std::size_t row = width * sizeof(float) + sizeof(CMoment);
  const std::uint64_t inBlock = std::max<std::uint64_t>(1, m_bytes / row / kBlocks);
  // Memory that is not written takes no pages, so a short run needs little of it.
  std::unique_ptr<float[]> values(new float[inBlock * kBlocks * std::max<std::size_t>(width, 1)]);
  std::unique_ptr<CMoment[]> moments(new CMoment[inBlock * kBlocks]);
  auto shared = std::make_shared<const std::vector<CString>>(std::move(names));
  const std::lock_guard lock(m_mutex);
  m_names = std::move(shared);
  ++m_generation;
  m_first = m_end = m_backSteps = 0;
  m_width = width;
  m_inBlock = inBlock;
  m_capacity = inBlock * kBlocks;
  m_values = std::move(values);
  m_moments = std::move(moments);
  m_latestDropped = kFirstMoment;
  m_hasDropped = false;
}

void CLiveSamples::DropBlock() {
  m_latestDropped = std::max(m_latestDropped, m_latest[m_first / m_inBlock % kBlocks]);
  m_hasDropped = true;
  m_first += m_inBlock;
}

void CLiveSamples::Add(const _timeb& time, const float* values, std::size_t count) {
  const CMoment moment = MomentOf(time);
  const std::lock_guard lock(m_mutex);
  if (!m_names) return;
  if (m_end - m_first == m_capacity) DropBlock();
  CMoment& latest = m_latest[m_end / m_inBlock % kBlocks];
  latest = m_end % m_inBlock == 0 ? moment : std::max(latest, moment);
  if (m_first < m_end && moment < m_moments[(m_end - 1) % m_capacity]) ++m_backSteps;
  m_moments[m_end % m_capacity] = moment;
  float* to = Place(m_end);
  const std::size_t copied = std::min(count, m_width);
  std::copy_n(values, copied, to);
  std::fill(to + copied, to + m_width, std::numeric_limits<float>::quiet_NaN());
  ++m_end;
}

CMoment CLiveSamples::LatestMoment() const {
  if (m_backSteps == 0) return m_moments[(m_end - 1) % m_capacity];
  CMoment latest = kFirstMoment;
  for (std::uint64_t i = m_first; i < m_end; i += m_inBlock)
    latest = std::max(latest, m_latest[i / m_inBlock % kBlocks]);
  return latest;
}

CLiveHead CLiveSamples::Head() const {
  const std::lock_guard lock(m_mutex);
  CLiveHead head{m_names, m_generation, m_first, m_end};
  if (m_first == m_end) return head;
  head.firstMoment = m_moments[m_first % m_capacity];
  head.lastMoment = LatestMoment();
  head.newestMoment = m_moments[(m_end - 1) % m_capacity];
  head.backSteps = m_backSteps;
  head.since = head.steadySince = m_hasDropped ? m_latestDropped + 1 : head.firstMoment;
  if (!m_hasDropped && m_end - m_first < m_capacity / 2) return head;
  for (std::size_t i = 0; i < kReserve; ++i)
    head.steadySince = std::max(head.steadySince, m_latest[(m_first / m_inBlock + i) % kBlocks] + 1);
  return head;
}

std::uint64_t CLiveSamples::Find(CMoment moment) const {
  const std::lock_guard lock(m_mutex);
  std::uint64_t from = m_first, to = m_backSteps ? m_first : m_end;
  while (from < to) {
    const std::uint64_t middle = from + (to - from) / 2;
    if (m_moments[middle % m_capacity] < moment)
      from = middle + 1;
    else
      to = middle;
  }
  return from;
}

bool CLiveSamples::Read(std::uint64_t generation, std::uint64_t first, CLivePiece& piece) const {
  const std::lock_guard lock(m_mutex);
  if (generation != m_generation || first < m_first || first >= m_end) return false;
  const std::size_t most =
      std::max<std::size_t>(1, kPieceBytes / (m_width * sizeof(float) + sizeof(CMoment)));
  const std::uint64_t toWrap = m_capacity - first % m_capacity;
  const auto count = static_cast<std::ptrdiff_t>(std::min<std::uint64_t>({most, toWrap, m_end - first}));
  const CMoment* moments = &m_moments[first % m_capacity];
  piece.moments.assign(moments, moments + count);
  piece.values.assign(Place(first), Place(first) + count * static_cast<std::ptrdiff_t>(m_width));
  return true;
}

}  // namespace vastra
