// CFeedPort: the socket of one feed with its readers. It never waits: a loop, which can have several ports,
// asks each what to wait for, calls poll, and lets each work.
#pragma once

#include <poll.h>

#include <list>

#include "host/feed/feed_reader.h"

namespace vastra {

class CFeedPort {
 public:
  using Time = CFeedContent::Time;

  // content must exist as long as the port.
  CFeedPort(const CString& path, CFeedContent& content) : m_socket(path), m_content(content) {}

  // Makes the socket. Empty, or why that is not possible.
  CString Open() { return m_socket.Open(); }

  // Adds what to wait for. Returns until when; Time::max() for a port without readers.
  Time AddPolled(Time now, std::vector<pollfd>& polled);
  // After poll, with what AddPolled has added at the places where it is.
  void Work(Time now, const std::vector<pollfd>& polled);
  // Without memory the readers are closed: they may come again.
  void CloseReaders(Time now);
  // The last lines, for the readers that take them at once.
  void Finish(Time now);

 private:
  static constexpr std::size_t kMostReaders = 64;

  void Accept(Time now);
  void Admit(CDescriptor socket, Time now);
  void WorkAll(bool areAllDue, Time now, const std::vector<pollfd>& polled);

  CFeedSocket m_socket;
  CFeedContent& m_content;
  std::list<CFeedReader> m_readers;
  std::size_t m_place = 0, m_end = 0;  // of the listener and the readers, in order, in what is polled
  Time m_acceptDue{};                  // when connections are accepted again
};

}  // namespace vastra
