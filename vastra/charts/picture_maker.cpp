#include "vastra/charts/picture_maker.h"

namespace vastra {
namespace {

constexpr int kFinerLevels = 3;        // of which a tile is made rather than read
constexpr int kReadAhead = 2;          // levels that are read finer than asked for, since users zoom in
constexpr double kFewRows = 1024;      // of a column; with more, those of a digest are faster
constexpr int kMostBeside = 4;         // tiles beside the range that are looked at for the step there
constexpr double kVeryMany = 500'000;  // rows, whose reading takes a time that a user notices
constexpr int kSketched = 256;         // of them
constexpr std::size_t kMostReserved = 20'000;  // steps

// Appends steps to a curve, those of one column as one. areColumns: they are columns of the level already.
void AppendSteps(CCurveSteps& curve, std::span<const CCurveStep> steps, int level, bool areColumns,
                 const CJoin& join) {
  const std::size_t before = curve.size();
  if (areColumns)
    curve.insert(curve.end(), steps.begin(), steps.end());
  else
    for (const CCurveStep& step : steps) AppendToColumn(curve, step, level);
  if (before > 0 && curve.size() > before) curve[before].isJoined = join(curve[before - 1], curve[before]);
}

// The steps of a tile that can be of use for range, and the ones beside them.
std::span<const CCurveStep> StepsFor(const CMomentRange& range, const CCurveSteps& steps) {
  auto first = std::partition_point(steps.begin(), steps.end(),
                                    [&](const CCurveStep& step) { return step.to < range.from; });
  auto end =
      std::partition_point(first, steps.end(), [&](const CCurveStep& step) { return step.from < range.to; });
  if (first != steps.begin()) --first;
  if (end != steps.end()) ++end;
  return {first, end};
}

// Leaves the last step before range, those in it, and the first one after it.
void CutTo(const CMomentRange& range, CCurveSteps& curve) {
  const std::span<const CCurveStep> kept = StepsFor(range, curve);
  const auto first = curve.begin() + (kept.data() - curve.data());
  curve.erase(first + static_cast<std::ptrdiff_t>(kept.size()), curve.end());
  curve.erase(curve.begin(), first);
}

}  // namespace

CPictureMaker::CPictureMaker(const CChartRows& rows, CChartTiles& tiles, const CChartQuery& query)
    : m_rows(rows),
      m_tiles(tiles),
      m_query(query),
      m_level(LevelOf(query.range, query.columns)),
      m_head(rows.Head()),
      m_there(rows.Range()) {
  std::size_t count = 0;
  for (const CVariableGroup& group : rows.GroupsOf(query.variables)) {
    m_covers.push_back(CoverOf(group));
    count += group.places.size() * m_covers.back().parts.size();
  }
  m_tiles.SetNeed(count);
  m_isReadAhead = m_tiles.IsRoomFor(count * (1 + (1U << kReadAhead)));
}

// A tile that the ring still fills is judged as a full one. Else wide tiles of few rows would be made there,
// and be read again as narrower ones when they have many.
CPictureMaker::CPart CPictureMaker::PartAt(const CTimeline& timeline, CMoment moment) const {
  const auto isSparse = [&](const CTilePlace& place) {
    return !m_tiles.IsDense(place) &&
           m_rows.Expect(timeline, place.Range(), m_head) <= double{CTileReader::kMostRows};
  };
  CTilePlace place = CTilePlace::Of(moment, m_level);
  if (!isSparse(place)) return {place, false};
  while (place.level < kTopLevel) {
    const CTilePlace wider = CTilePlace::Of(moment, place.level + 1);
    if (!isSparse(wider)) break;
    place = wider;
  }
  return {place, true};
}

// The tiles of the range, and of the steps beside it that a line can lead to.
CPictureMaker::CCover CPictureMaker::CoverOf(const CVariableGroup& group) const {
  CCover cover = {group, {}};
  const CTimeline& timeline = *group.timeline;
  const CMoment from = std::max(m_query.range.from, m_there.from),
                to = std::min(m_query.range.to, m_there.to);
  const CMoment first =
      std::max(m_there.from, m_query.range.from - m_rows.LongestStep(timeline, m_query.range.from, m_head));
  const CMoment end =
      std::min(m_there.to, m_query.range.to + m_rows.LongestStep(timeline, m_query.range.to, m_head));
  std::vector<CPart>& parts = cover.parts;
  for (CMoment at = from; at < to; at = parts.back().place.Range().to) parts.push_back(PartAt(timeline, at));
  CMoment reached = parts.empty() ? std::min(from, end) : parts.back().place.Range().to;
  for (int i = 0; i < kMostBeside && reached < end; ++i, reached = parts.back().place.Range().to)
    parts.push_back(PartAt(timeline, reached));
  reached = parts.empty() ? from : parts.front().place.Range().from;
  for (int i = 0; i < kMostBeside && reached > first; ++i, reached = parts.front().place.Range().from)
    parts.insert(parts.begin(), PartAt(timeline, reached - 1));
  return cover;
}

bool CPictureMaker::IsThere(const CString& variable, const CPart& part) const {
  const CTile* const tile = m_tiles.Find(variable, part.place);
  return tile && tile->isExact == part.isExact;
}

// Makes a tile of columns of the two of the level below, which can be made themselves.
bool CPictureMaker::MakeOfFiner(const CTimeline& timeline, const CString& variable, const CTilePlace& place,
                                int depth) const {
  if (place.level == 0 || depth == 0) return false;
  CTile tile;
  tile.steps.reserve(std::size_t{1} << kTileBits);
  const CJoin join(m_rows, timeline, m_head);
  for (const std::int64_t index : {2 * place.index, 2 * place.index + 1}) {
    const CTilePlace finer = {place.level - 1, index};
    if (!m_tiles.Find(variable, finer) && !MakeOfFiner(timeline, variable, finer, depth - 1)) return false;
    const CTile* const part = m_tiles.Find(variable, finer);
    if (part->isOpen) return false;
    AppendSteps(tile.steps, part->steps, place.level, false, join);
  }
  tile.steps.shrink_to_fit();
  m_tiles.Put(variable, place, std::move(tile));
  return true;
}

std::vector<CString> CPictureMaker::Missing(const CCover& cover, const CPart& part) const {
  std::vector<CString> missing;
  for (const std::size_t i : cover.group.places) {
    const CString& variable = m_query.variables[i];
    if (IsThere(variable, part)) continue;
    if (!part.isExact && MakeOfFiner(*cover.group.timeline, variable, part.place, kFinerLevels)) continue;
    if (std::find(missing.begin(), missing.end(), variable) == missing.end()) missing.push_back(variable);
  }
  return missing;
}

// How many levels finer than asked for the rows of a part are read.
int CPictureMaker::AheadOf(const CTimeline& timeline, const CPart& part) const {
  const CMomentRange range = part.place.Range();
  if (part.isExact || !m_isReadAhead || part.place.level < kReadAhead || range.to > timeline.since) return 0;
  return m_rows.Estimate(timeline, range, m_head) <= kFewRows * (1 << kTileBits) ? kReadAhead : 0;
}

// What is read at once: tiles that follow each other and that the same variables lack.
std::vector<CTileRun> CPictureMaker::MissingRuns() const {
  std::vector<CTileRun> runs;
  for (const CCover& cover : m_covers)
    for (const CPart& part : cover.parts) {
      std::vector<CString> missing = Missing(cover, part);
      if (missing.empty()) continue;
      const int ahead = AheadOf(*cover.group.timeline, part), level = part.place.level - ahead;
      const std::int64_t index = part.place.index << ahead, end = (part.place.index + 1) << ahead;
      CTileRun run = {cover.group.timeline, std::move(missing), level, index, end, part.isExact};
      const bool goesOn = !runs.empty() && runs.back().timeline == run.timeline &&
                          runs.back().level == level && runs.back().end == index &&
                          runs.back().isExact == run.isExact && runs.back().variables == run.variables;
      if (goesOn)
        runs.back().end = end;
      else
        runs.push_back(std::move(run));
    }
  return runs;
}

void CPictureMaker::RefreshOpen(const CCover& cover, const CPart& part) const {
  const CTimeline& timeline = *cover.group.timeline;
  const bool hasLogs = timeline.isLive && timeline.since > kFirstMoment;
  const std::uint64_t inLogs = hasLogs ? m_rows.Live()->Find(timeline.since) : 0;
  std::map<std::uint64_t, std::vector<CString>> open;  // by the sample that was not looked at yet
  for (const std::size_t i : cover.group.places) {
    const CString& variable = m_query.variables[i];
    const CTile* const tile = m_tiles.Find(variable, part.place);
    if (!tile || !tile->isOpen || tile->nextLive >= m_head.end) continue;
    // Samples that were not looked at are read from logs by now: the tile is read again.
    if (tile->nextLive < inLogs) {
      m_tiles.Take(variable, part.place);
      continue;
    }
    std::vector<CString>& variables = open[tile->nextLive];
    if (std::find(variables.begin(), variables.end(), variable) == variables.end())
      variables.push_back(variable);
  }
  const auto [level, index] = part.place;
  for (auto& [next, variables] : open) {
    const CTileRun run = {&timeline, std::move(variables), level, index, index + 1, part.isExact};
    CTileReader(m_rows, m_head, m_tiles, run).Refresh();
  }
}

bool CPictureMaker::Read(const CReadWatch& watch) {
  for (const CCover& cover : m_covers)
    for (const CPart& part : cover.parts) RefreshOpen(cover, part);
  for (std::vector<CTileRun> runs = MissingRuns(); !runs.empty(); runs = MissingRuns()) {
    if (m_sketch.empty() && AreVeryMany(runs)) MakeSketch();
    double done = 0;
    if (!watch(0)) return false;
    bool wasTooMany = false;
    for (const CTileRun& run : runs) {
      CTileReader reader(m_rows, m_head, m_tiles, run);
      const auto count = static_cast<double>(runs.size());
      const auto end = reader.Read([&](double part) { return watch((done + part) / count); });
      if (end == CTileReader::EEnd::stopped || end == CTileReader::EEnd::overtaken) return false;
      if (!watch(++done / count)) return false;
      m_faults.insert(m_faults.end(), reader.Faults().begin(), reader.Faults().end());
      if (end != CTileReader::EEnd::tooManyRows) continue;
      wasTooMany = true;
      for (std::int64_t index = run.begin; index < run.end; ++index) m_tiles.SetDense({run.level, index});
    }
    if (!wasTooMany && !m_isReadAhead) break;
    m_isReadAhead = false;  // what could not be made of it is read as asked for
    if (wasTooMany)
      for (CCover& cover : m_covers) cover = CoverOf(cover.group);
  }
  return true;
}

bool CPictureMaker::AreVeryMany(const std::vector<CTileRun>& runs) const {
  double rows = 0;
  for (const CTileRun& run : runs) rows += m_rows.Estimate(*run.timeline, run.Range(), m_head);
  return rows > kVeryMany;
}

void CPictureMaker::MakeSketch() {
  const CMoment from = std::max(m_query.range.from, m_there.from),
                to = std::min(m_query.range.to, m_there.to);
  for (const CCover& cover : m_covers) {
    std::vector<CString> variables;
    for (const std::size_t i : cover.group.places) {
      variables.push_back(m_query.variables[i]);
      m_sketch[variables.back()].clear();
    }
    for (int i = 0; i < kSketched; ++i)
      AddSketched(*cover.group.timeline, variables, from + (to - from) / kSketched * i);
  }
}

// Adds a row that is near to a moment.
void CPictureMaker::AddSketched(const CTimeline& timeline, const std::vector<CString>& variables,
                                CMoment moment) {
  const CMoment end = moment + m_rows.LongestStep(timeline, moment, m_head) + 1;
  CRowReader reader(m_rows.Logs(), {{moment, std::min(end, timeline.since)}, variables});
  CHistoryRow row;
  if (!reader.Next(row)) return;
  for (std::size_t i = 0; i < variables.size(); ++i) {
    CCurveSteps& steps = m_sketch[variables[i]];
    float value;
    if (!row.Get(i, value) || (!steps.empty() && steps.back().from >= row.moment)) continue;
    const CMoment distance = (m_query.range.to - m_query.range.from) / kSketched;
    const bool isJoined = !steps.empty() && row.moment - steps.back().to < 2 * distance;
    steps.push_back(StepOf(row.moment, value));
    steps.back().isJoined = isJoined;
  }
}

// The steps of a place that has no tile: of a wider tile, or else of the sketch, or of finer ones.
void CPictureMaker::AddOther(CCurveSteps& curve, const CString& variable, const CTilePlace& place,
                             const CSketch& sketch) const {
  const CMomentRange range = place.Range();
  for (int level = place.level + 1; level <= kTopLevel; ++level) {
    const CTile* const tile = m_tiles.Find(variable, CTilePlace::Of(range.from, level));
    if (!tile) continue;
    for (const CCurveStep& step : tile->steps)
      if (range.Has(step.from)) curve.push_back(step);
    return;
  }
  const auto sketched = sketch.find(variable);
  if (sketched != sketch.end())
    for (const CCurveStep& step : sketched->second)
      if (range.Has(step.from) && (curve.empty() || curve.back().to < step.from)) curve.push_back(step);
  if (sketched != sketch.end()) return;
  for (int level = place.level - 1; level >= std::max(0, place.level - kFinerLevels); --level)
    for (CMoment at = range.from; at < range.to; at = CTilePlace::Of(at, level).Range().to)
      if (const CTile* const tile = m_tiles.Find(variable, CTilePlace::Of(at, level)))
        for (const CCurveStep& step : tile->steps)
          if (curve.empty() || curve.back().to < step.from) curve.push_back(step);
}

CCurveSteps CPictureMaker::CurveOf(const CCover& cover, const CString& variable,
                                   const CSketch& sketch) const {
  CCurveSteps curve;
  curve.reserve(std::min(2 * std::size_t{m_query.columns} + 2, kMostReserved));
  const CJoin join(m_rows, *cover.group.timeline, m_head);
  for (const CPart& part : cover.parts) {
    const CTile* const tile = m_tiles.Find(variable, part.place);
    if (!tile) {
      AddOther(curve, variable, part.place, sketch);
      continue;
    }
    // A part of a column of rows is not of use: the whole tile.
    if (tile->isExact)
      AppendSteps(curve, tile->steps, m_level, false, join);
    else
      AppendSteps(curve, StepsFor(m_query.range, tile->steps), m_level, true, join);
  }
  CutTo(m_query.range, curve);
  return curve;
}

CChartPicture CPictureMaker::Make(const CSketch& sketch) const {
  std::vector<CCurveSteps> curves(m_query.variables.size());
  for (const CCover& cover : m_covers)
    for (const std::size_t i : cover.group.places) curves[i] = CurveOf(cover, m_query.variables[i], sketch);
  return {m_query, std::move(curves)};
}

}  // namespace vastra
