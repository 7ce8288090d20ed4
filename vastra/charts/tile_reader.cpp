#include "vastra/charts/tile_reader.h"

#include "vastra/charts/chart_row_reader.h"

namespace vastra {

constexpr int kRowsBetweenWatches = 256;

bool CJoin::operator()(const CCurveStep& before, const CCurveStep& step) const {
  const std::int64_t distance = step.from - before.to;
  return distance <= m_rows.LongestStep(m_timeline, step.from, m_head) ||
         distance <= m_rows.LongestStep(m_timeline, before.to, m_head);
}

CTileReader::CTileReader(const CChartRows& rows, const CLiveHead& head, CChartTiles& tiles,
                         const CTileRun& run)
    : m_rows(rows),
      m_head(head),
      m_tiles(tiles),
      m_run(run),
      m_join(rows, *run.timeline, head),
      m_made(run.variables.size(), std::vector<CTile>(static_cast<std::size_t>(run.end - run.begin))),
      m_put(run.begin) {}

CTileReader::EEnd CTileReader::Read(const CReadWatch& watch) {
  const EEnd end = m_run.isExact ? ReadRows(watch) : ReadColumns(watch);
  if (end != EEnd::done) return end;
  ReadLive(0);
  if (HasTooMany()) return EEnd::tooManyRows;
  if (m_run.timeline->isLive && !m_rows.IsComplete()) return EEnd::overtaken;
  PutBefore(m_run.end);
  return EEnd::done;
}

CTileReader::EEnd CTileReader::ReadRows(const CReadWatch& watch) {
  CMomentRange range = m_run.Range();
  range.to = std::min(range.to, m_run.timeline->since);
  CRowReader reader(m_rows.Logs(), {range, m_run.variables});
  CHistoryRow row;
  for (int i = 0; range.from < range.to && reader.Next(row); ++i) {
    if (i % kRowsBetweenWatches == 0 && !watch(reader.Progress())) return EEnd::stopped;
    for (std::size_t k = 0; k < m_run.variables.size(); ++k)
      if (float value; row.Get(k, value)) Add(k, StepOf(row.moment, value));
    if (HasTooMany()) return EEnd::tooManyRows;
  }
  m_faults = reader.Faults();
  return EEnd::done;
}

// The logs end in the middle of a column where the ring begins.
CTileReader::EEnd CTileReader::ReadColumns(const CReadWatch& watch) {
  const CMomentRange range = m_run.Range();
  const CMoment to = std::min(range.to, m_run.timeline->since);
  const CMoment whole = std::max(range.from, ColumnOf(to, m_run.level));
  const auto columns = static_cast<std::uint64_t>((whole - range.from) >> m_run.level);
  const EEnd end = ReadBuckets({range.from, whole}, columns, watch);
  return end == EEnd::done && whole < to ? ReadBuckets({whole, to}, 1, watch) : end;
}

CTileReader::EEnd CTileReader::ReadBuckets(const CMomentRange& range, std::uint64_t parts,
                                           const CReadWatch& watch) {
  if (range.from >= range.to) return EEnd::done;
  CBucketReader reader(m_rows.Logs(), {.range = range, .parts = parts, .variables = m_run.variables});
  CBucketPart part;
  while (reader.Next(part)) {
    if (!watch(reader.Progress())) return EEnd::stopped;
    PutBefore(CTilePlace::Of(part.from, m_run.level).index);
    for (std::size_t i = 0; i < part.buckets.size(); ++i)
      if (HasValues(part.buckets[i])) Add(i, StepOf(part, part.buckets[i]));
  }
  m_faults.insert(m_faults.end(), reader.Faults().begin(), reader.Faults().end());
  return EEnd::done;
}

// begin: the sample of the ring that is looked at first.
void CTileReader::ReadLive(std::uint64_t begin) {
  CMomentRange range = m_run.Range();
  range.from = std::max(range.from, m_run.timeline->since);
  if (!m_run.timeline->isLive || range.from >= range.to) return;
  const std::vector<std::int32_t> places = PlacesInRing(m_rows, m_run.variables);
  CLiveRows live(m_rows, range, begin);
  while (live.Next())
    for (std::size_t k = 0; k < places.size(); ++k) Add(k, StepOf(live.Moment(), live.Values()[places[k]]));
  for (std::vector<CTile>& made : m_made)
    for (std::size_t i = 0; i < made.size(); ++i) {
      const CMoment end = CTilePlace{m_run.level, m_run.begin + static_cast<std::int64_t>(i)}.Range().to;
      made[i].isOpen = m_head.first == m_head.end || m_head.lastMoment < end;
      made[i].nextLive = live.End();
    }
}

void CTileReader::Refresh() {
  for (std::size_t i = 0; i < m_made.size(); ++i)
    m_made[i][0] = m_tiles.Take(m_run.variables[i], {m_run.level, m_run.begin});
  ReadLive(m_made[0][0].nextLive);
  if (!HasTooMany() && m_rows.IsComplete()) PutBefore(m_run.end);
}

void CTileReader::Add(std::size_t variable, const CCurveStep& step) {
  const auto index = CTilePlace::Of(step.from, m_run.level).index - m_run.begin;
  CCurveSteps& steps = m_made[variable][static_cast<std::size_t>(index)].steps;
  const bool isColumn = !m_run.isExact && !steps.empty() &&
                        ColumnOf(steps.back().from, m_run.level) == ColumnOf(step.from, m_run.level);
  if (isColumn) return AddStep(steps.back(), step);
  const bool isJoined = !steps.empty() && m_join(steps.back(), step);
  steps.push_back(step);
  steps.back().isJoined = isJoined;
  m_most = std::max(m_most, steps.size());
}

void CTileReader::PutBefore(std::int64_t index) {
  for (; m_put < index; ++m_put)
    for (std::size_t i = 0; i < m_made.size(); ++i) {
      CTile& tile = m_made[i][static_cast<std::size_t>(m_put - m_run.begin)];
      tile.isExact = m_run.isExact;
      if (!tile.isOpen) tile.steps.shrink_to_fit();
      m_tiles.Put(m_run.variables[i], {m_run.level, m_put}, std::move(tile));
    }
}

}  // namespace vastra
