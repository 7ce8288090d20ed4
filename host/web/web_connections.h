// CWebConnections: how many connections there may be. Where there are too many, the one that has done nothing
// for longest ends, so that those who only hold connections, or send a request byte by byte, leave a place
// for others; without such a one the file or large answer that has been on its way for longest. The thread of
// the connections alone calls it.
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <map>
#include <string>

namespace vastra {

struct CConnectionLimits {
  std::size_t most = 1000;
  std::size_t ofViewer = 0;                        // 0: as many as there are
  std::size_t mostBytes = std::size_t{128} << 20;  // of all answers that are being sent
  std::chrono::seconds patience{10};               // an answer can be given up for others after it
};

class CWebConnections {
 public:
  using Clock = std::chrono::steady_clock;
  using Time = Clock::time_point;
  using CEnd = std::function<void(int socket)>;

  // end: ends a connection, soon; Remove is called for it as for any other.
  CWebConnections(const CConnectionLimits& limits, CEnd end) : m_limits(limits), m_end(std::move(end)) {}

  // Whether a connection of viewer, a key of ViewerKey, can be added. Ends another one if necessary. There
  // may be as many as in all of a viewer without a key, which a trusted server is.
  bool MakeRoom(const std::string& viewer, Time now);
  void Add(int socket, const std::string& viewer);
  void Remove(int socket);

  // A request has been read, and a connection does nothing until the next one when its answer has ended.
  void Begin(int socket);
  void Finish(int socket);
  // The sending of a file or a large answer begins, which keeps so many bytes in memory. False: there are too
  // many, also if others end.
  bool Keep(int socket, std::size_t bytes, Time now);

 private:
  struct COne {
    int socket;
    std::string viewer;
    bool isEnded = false;
    std::size_t bytes = 0;
    Time begun{};  // of the sending
  };
  using CList = std::list<COne>;

  void Move(int socket, CList& list);
  bool EndFirst(const std::string* viewer, Time now);
  void Release(COne& one);
  void End(COne& one);

  const CConnectionLimits m_limits;
  const CEnd m_end;
  CList m_idle, m_busy, m_sending;  // the longest of each first
  struct CPlace {
    CList* list;
    CList::iterator one;
  };
  std::map<int, CPlace> m_places;  // by socket
  std::map<std::string, std::size_t> m_viewers;
  std::size_t m_count = 0, m_bytes = 0;  // without those that were ended
};

}  // namespace vastra
