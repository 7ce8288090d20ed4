// CMessageStore: the messages of the open configuration, those of this start of the desktop and earlier ones
// from its files. Any thread adds messages. The thread of the window takes them a few times a second and owns
// the lines.
#pragma once

#include <deque>
#include <mutex>

#include "host/desktop/message_writer.h"

namespace vastra {

class CMessageStore {
 public:
  struct CLimits {
    std::size_t lines = 20000;  // in memory
    std::size_t fileBytes = CMessageFiles::kMostBytes;
  };
  // wake is called from any thread when Take has something to do. It must not call the store.
  explicit CMessageStore(std::function<void()> wake) : CMessageStore(std::move(wake), CLimits()) {}
  CMessageStore(std::function<void()> wake, CLimits limits);
  ~CMessageStore() { Take(); }  // so that the files get the last messages
  CMessageStore(const CMessageStore&) = delete;
  CMessageStore& operator=(const CMessageStore&) = delete;

  // From any thread. Waits for nothing except another call of Add or Take, and those do not wait for the
  // disk.
  void Add(CLoggedMessage line);

  // What follows is for the thread of the window.

  // Shows the messages of another configuration in place of the present ones: those of its files.
  // configuration: its absolute path; empty: it has no file yet, and its messages are in memory only.
  void Open(const CString& configuration);
  // The configuration has another path from now on: its lines stay, and the files of that path get those that
  // they do not have.
  void MoveTo(const CString& configuration);

  // What Take has changed, in this order.
  struct CChange {
    bool isReset = false;         // all lines are others
    std::size_t removed = 0;      // from the front
    bool hasLastChanged = false;  // the last line has another count; it was not removed
    std::size_t added = 0;        // at the end
  };
  // Takes over what was added and what was read.
  CChange Take();

  std::size_t Size() const { return m_lines.size(); }
  const CLoggedMessage& Line(std::size_t index) const { return m_lines[index]; }
  // Removes all lines from memory; the files keep them.
  void Clear() { m_lines.clear(); }

 private:
  void TakeStored(CChange& change);
  void TakeFault();
  void Append(const CLoggedMessage& line, CChange& change);
  void Trim(CChange& change);
  void StartWriter(const CString& configuration);
  std::vector<CLoggedMessage> TakeInbox();

  const std::function<void()> m_wake;
  const CLimits m_limits;
  std::deque<CLoggedMessage> m_lines;
  CString m_configuration;
  std::unique_ptr<CMessageWriter> m_pWriter;  // null: the configuration has no file

  std::mutex m_mutex;  // of what follows
  std::vector<CLoggedMessage> m_inbox;
  std::uint64_t m_leftOut = 0;
};

}  // namespace vastra
