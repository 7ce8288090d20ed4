#include "host/web/web_connections.h"

#include <algorithm>
#include <utility>

namespace vastra {

bool CWebConnections::MakeRoom(const std::string& viewer) {
  const auto own = m_viewers.find(viewer);
  if (m_limits.ofViewer > 0 && own != m_viewers.end() && own->second >= m_limits.ofViewer &&
      !EndFirst(&viewer))
    return false;
  return m_count < m_limits.most || EndFirst(nullptr);
}

// Of the viewer, or of all.
bool CWebConnections::EndFirst(const std::string* viewer) {
  const auto found = std::ranges::find_if(
      m_idle, [viewer](const COne& one) { return !one.isEnded && (!viewer || one.viewer == *viewer); });
  if (found == m_idle.end()) return false;
  End(*found);
  return true;
}

void CWebConnections::End(COne& one) {
  if (one.isEnded) return;
  Release(one);
  m_end(one.socket);
}

// It does not count any more.
void CWebConnections::Release(COne& one) {
  if (std::exchange(one.isEnded, true)) return;
  --m_count;
  m_bytes -= std::exchange(one.bytes, 0);
  const auto own = m_viewers.find(one.viewer);
  if (--own->second == 0) m_viewers.erase(own);
}

void CWebConnections::Add(int socket, const std::string& viewer) {
  m_idle.push_back({.socket = socket, .viewer = viewer, .begun = {}});
  m_places[socket] = {&m_idle, std::prev(m_idle.end())};
  ++m_viewers[viewer];
  ++m_count;
}

void CWebConnections::Remove(int socket) {
  const auto found = m_places.find(socket);
  if (found == m_places.end()) return;
  const CPlace place = found->second;
  m_places.erase(found);
  Release(*place.one);
  place.list->erase(place.one);
}

void CWebConnections::Move(int socket, CList& list) {
  const auto found = m_places.find(socket);
  if (found == m_places.end()) return;
  CPlace& place = found->second;
  list.splice(list.end(), *place.list, place.one);
  place.list = &list;
}

void CWebConnections::Begin(int socket) { Move(socket, m_busy); }

void CWebConnections::Finish(int socket) {
  const auto found = m_places.find(socket);
  if (found == m_places.end()) return;
  m_bytes -= std::exchange(found->second.one->bytes, 0);
  Move(socket, m_idle);
}

bool CWebConnections::Keep(int socket, std::size_t bytes, Time now) {
  const auto found = m_places.find(socket);
  if (found == m_places.end()) return false;
  for (COne& one : m_sending)
    if (m_bytes + bytes > m_limits.mostBytes && now - one.begun > m_limits.patience) End(one);
  if (m_bytes + bytes > m_limits.mostBytes) return false;
  COne& one = *found->second.one;
  if (one.isEnded) return false;
  one.bytes += bytes;
  one.begun = now;
  m_bytes += bytes;
  Move(socket, m_sending);
  return true;
}

}  // namespace vastra
