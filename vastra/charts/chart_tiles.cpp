#include "vastra/charts/chart_tiles.h"

namespace vastra {

constexpr std::size_t kTileBytes = (std::size_t{1} << kTileBits) * sizeof(CCurveStep);

CChartTiles::CKey CChartTiles::KeyOf(const CString& variable, const CTilePlace& place) {
  const auto [at, isNew] = m_numbers.try_emplace(variable, m_variables.size());
  if (isNew) m_variables.push_back(variable);
  return {at->second, place.level, place.index};
}

const CTile* CChartTiles::Find(const CString& variable, const CTilePlace& place) {
  const auto found = m_byKey.find(KeyOf(variable, place));
  if (found == m_byKey.end()) return nullptr;
  m_entries.splice(m_entries.begin(), m_entries, found->second);
  return &found->second->tile;
}

void CChartTiles::Put(const CString& variable, const CTilePlace& place, CTile tile) {
  const CKey key = KeyOf(variable, place);
  if (const auto found = m_byKey.find(key); found != m_byKey.end()) Remove(found->second);
  const std::size_t bytes = tile.steps.capacity() * sizeof(CCurveStep) + sizeof(CEntry);
  m_entries.push_front({key, std::move(tile), bytes});
  m_byKey[key] = m_entries.begin();
  m_bytes += bytes;
  while (m_bytes > m_mostBytes && m_entries.size() > 1) Remove(std::prev(m_entries.end()));
}

CTile CChartTiles::Take(const CString& variable, const CTilePlace& place) {
  const auto found = m_byKey.find(KeyOf(variable, place));
  CTile tile = std::move(found->second->tile);
  Remove(found->second);
  return tile;
}

void CChartTiles::Drop(const CMomentRange& range, const std::function<CMoment(const CString&)>& before) {
  m_dense.clear();
  std::vector<CMoment> ends;
  for (const CString& variable : m_variables) ends.push_back(std::min(range.to, before(variable)));
  for (auto entry = m_entries.begin(); entry != m_entries.end();) {
    const auto& [variable, level, index] = entry->key;
    const CMomentRange own = CTilePlace{level, index}.Range();
    entry = own.from < ends[variable] && range.from < own.to ? Remove(entry) : std::next(entry);
  }
}

void CChartTiles::Clear() {
  m_dense.clear();
  m_entries.clear();
  m_byKey.clear();
  m_bytes = 0;
}

void CChartTiles::SetNeed(std::size_t tiles) {
  // Twice, since tiles of rows can be larger than those of columns.
  m_mostBytes = std::max(kUsualBytes, 2 * tiles * (kTileBytes + sizeof(CEntry)));
}

bool CChartTiles::IsRoomFor(std::size_t tiles) {
  return 2 * tiles * (kTileBytes + sizeof(CEntry)) <= kUsualBytes;
}

CChartTiles::CEntries::iterator CChartTiles::Remove(CEntries::iterator entry) {
  m_bytes -= entry->bytes;
  m_byKey.erase(entry->key);
  return m_entries.erase(entry);
}

}  // namespace vastra
