#include "host/web/web_connections.h"

#include <utility>

namespace vastra {

bool CWebConnections::MakeRoom(const std::string& viewer, Time now) {
  const bool isCounted = m_limits.ofViewer > 0 && !viewer.empty();
  const auto own = m_viewers.find(viewer);
  if (isCounted && own != m_viewers.end() && own->second >= m_limits.ofViewer && !EndFirst(&viewer, now))
    return false;
  return m_count < m_limits.most || EndFirst(nullptr, now);
}

// Of the viewer, or of all.
bool CWebConnections::EndFirst(const std::string* viewer, Time now) {
  const Time latest = now - m_limits.patience;
  for (CList* const list : {&m_idle, &m_sending})
    for (COne& one : *list)
      if (!one.isEnded && (!viewer || one.viewer == *viewer) && one.begun < latest) {
        End(one);
        return true;
      }
  return false;
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
  m_idle.push_back({.socket = socket, .viewer = viewer});
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
  found->second.one->begun = {};
  Move(socket, m_idle);
}

bool CWebConnections::Keep(int socket, std::size_t bytes, Time now) {
  const auto found = m_places.find(socket);
  if (found == m_places.end()) return false;
  for (COne& one : m_sending)
    if (one.bytes > 0 && m_bytes + bytes > m_limits.mostBytes && now - one.begun > m_limits.patience)
      End(one);
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
