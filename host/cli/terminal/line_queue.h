// CLineQueue: lines on their way to a terminal, a pipe or a file that perhaps nobody reads. A thread of the
// queue writes them, so that whoever adds a line waits for no reader. A queue that is full drops lines and
// writes their number at the place where they are missing.
//
// Threads: all operations may be called from any thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace vastra {

class CLineQueue {
 public:
  // Bounds of what waits.
  static constexpr std::size_t kMostLines = 5000, kMostBytes = std::size_t{512} << 10;

  // file stays the caller's.
  explicit CLineQueue(int file);
  CLineQueue(const CLineQueue&) = delete;
  CLineQueue& operator=(const CLineQueue&) = delete;
  ~CLineQueue();  // drains the queue; a thread that still waits for a reader goes on alone

  // Adds line, which has no line end. Into a regular file, which always moves, it waits for space instead of
  // dropping the line.
  void Add(const std::string& line);
  // Shows lines, without line ends, on the terminal onFile below all others. They replace the former ones and
  // are redrawn after each line that goes above them; without lines they are erased. Only the last ones are
  // drawn if the terminal is slow.
  void SetStatus(std::vector<std::string> lines, int onFile);

  // Waits until all is written: up to a second while bytes move, and no longer once the reader has stalled.
  void Drain();
  // Why the last write failed, an errno; 0: it did not fail.
  int Fault() const;

 private:
  struct CState;
  static void Write(const std::shared_ptr<CState>& state);

  const std::shared_ptr<CState> m_state;  // shared with the thread, which can outlast the queue
};

}  // namespace vastra
