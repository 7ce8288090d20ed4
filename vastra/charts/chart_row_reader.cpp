#include "vastra/charts/chart_row_reader.h"

#include <numeric>

namespace vastra {
namespace {

// The part of range that some of the variables have in logs.
CMomentRange RangeOfLogs(const CChartRows& rows, CMomentRange range, const std::vector<CString>& variables) {
  CMoment since = kFirstMoment;
  for (const CString& variable : variables) since = std::max(since, rows.TimelineOf(variable).since);
  range.to = std::max(range.from, std::min(range.to, since));
  return range;
}

// And the part that some of them have in the ring.
CMomentRange RangeOfRing(const CChartRows& rows, CMomentRange range, const std::vector<CString>& variables) {
  CMoment since = kEndMoment;
  for (const CString& variable : variables) since = std::min(since, rows.TimelineOf(variable).since);
  range.from = std::max(range.from, std::min(range.to, since));
  return range;
}

}  // namespace

std::vector<std::int32_t> PlacesInRing(const CChartRows& rows, const std::vector<CString>& variables) {
  const std::vector<CString>& names = rows.LiveNames();
  std::vector<std::int32_t> places;
  for (const CString& variable : variables) {
    const auto found = std::find(names.begin(), names.end(), variable);
    places.push_back(found == names.end() ? -1 : static_cast<std::int32_t>(found - names.begin()));
  }
  return places;
}

CLiveRows::CLiveRows(const CChartRows& rows, const CMomentRange& range, std::uint64_t begin)
    : m_rows(rows), m_range(range), m_width(rows.LiveNames().size()) {
  if (!rows.Live() || range.from >= range.to) return;
  const CLiveHead head = rows.Live()->Head();
  if (head.generation != rows.Generation()) return;
  m_end = head.end;
  m_next = std::max(begin, rows.Live()->Find(range.from));
  m_isOrdered = head.backSteps == 0;
  if (!m_isOrdered) LoadSorted();
}

bool CLiveRows::Next() {
  for (++m_row;; m_row = 0) {
    for (; m_row < m_count; ++m_row) {
      if (m_range.Has(Moment())) return true;
      if (Moment() >= m_range.to && m_isOrdered) return false;
    }
    if (m_isLoaded || m_next >= m_end || !m_rows.Live()->Read(m_rows.Generation(), m_next, m_piece))
      return false;
    m_count = static_cast<std::size_t>(std::min<std::uint64_t>(m_piece.moments.size(), m_end - m_next));
    m_next += m_count;
  }
}

void CLiveRows::LoadSorted() {
  CLivePiece all, sorted;
  while (Next()) {
    all.moments.push_back(Moment());
    all.values.insert(all.values.end(), Values(), Values() + m_width);
  }
  std::vector<std::size_t> order(all.moments.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return all.moments[a] < all.moments[b]; });
  for (const std::size_t i : order) {
    const auto values = all.values.begin() + static_cast<std::ptrdiff_t>(i * m_width);
    sorted.moments.push_back(all.moments[i]);
    sorted.values.insert(sorted.values.end(), values, values + static_cast<std::ptrdiff_t>(m_width));
  }
  m_piece = std::move(sorted);
  m_count = m_piece.moments.size();
  m_row = SIZE_MAX;
  m_isLoaded = true;
}

CChartRowReader::CChartRowReader(const CChartRows& rows, const CMomentRange& range,
                                 const std::vector<CString>& variables)
    : m_logs(rows.Logs(), {RangeOfLogs(rows, range, variables), variables}),
      m_live(rows, RangeOfRing(rows, range, variables)),
      m_cells(variables.size()) {
  const std::vector<std::int32_t> places = PlacesInRing(rows, variables);
  for (std::size_t i = 0; i < variables.size(); ++i)
    m_columns.push_back({rows.TimelineOf(variables[i]).since, places[i]});
  m_hasRow = !variables.empty() && m_logs.Next(m_row);
  m_hasLive = m_live.Next();
}

bool CChartRowReader::Next() {
  while (m_hasRow || m_hasLive) {
    const bool isLogged = m_hasRow && (!m_hasLive || m_row.moment <= m_live.Moment());
    if (isLogged ? TakeLogged() : TakeLive()) return true;
  }
  return false;
}

bool CChartRowReader::TakeLogged() {
  m_moment = m_row.moment;
  bool hasAny = false;
  for (std::size_t i = 0; i < m_columns.size(); ++i) {
    float value;
    const bool has = m_moment < m_columns[i].since && m_row.Get(i, value);
    m_cells[i] = has ? std::optional(value) : std::nullopt;
    hasAny |= has;
  }
  m_hasRow = m_logs.Next(m_row);
  return hasAny;
}

bool CChartRowReader::TakeLive() {
  m_moment = m_live.Moment();
  const float* const values = m_live.Values();
  bool hasAny = false;
  for (std::size_t i = 0; i < m_columns.size(); ++i) {
    const bool has = m_moment >= m_columns[i].since && m_columns[i].inRing >= 0;
    m_cells[i] = has ? std::optional(values[m_columns[i].inRing]) : std::nullopt;
    hasAny |= has;
  }
  m_hasLive = m_live.Next();
  return hasAny;
}

}  // namespace vastra
