// CMessageWriter: writes the messages of a configuration to its files, on a thread of its own, so that no
// disk keeps the sender of a message or the window waiting. CMessageStore is its only user.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "host/desktop/message_files.h"

namespace vastra {

class CMessageWriter {
 public:
  // Reads up to mostLines of files first, and writes the lines of moved that they do not have. wake is called
  // on the thread of the writer when TakeStored or TakeFault has something.
  CMessageWriter(CMessageFiles files, std::size_t mostLines, std::vector<CLoggedMessage> moved,
                 std::function<void()> wake);
  // Writes what is left. A disk that does not return within seconds is left to itself.
  ~CMessageWriter();
  CMessageWriter(const CMessageWriter&) = delete;
  CMessageWriter& operator=(const CMessageWriter&) = delete;

  // Takes lines to be written soon. While the disk is slow or full, lines beyond a bound are left out, and a
  // line in the file says how many.
  void Put(std::vector<CLoggedMessage> lines);

  // What the files had at the start, once.
  std::optional<CMessageFiles::CStored> TakeStored();
  // Why lines cannot be written, once for each time that this begins; empty: they are.
  CString TakeFault();

 private:
  class CWork;
  const std::shared_ptr<CWork> m_pWork;
  std::thread m_thread;
};

}  // namespace vastra
