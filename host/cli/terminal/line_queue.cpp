#include "host/cli/terminal/line_queue.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "host/cli/terminal/screen.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;
using Guard = std::unique_lock<std::mutex>;

// A reader that takes nothing for kStall has stalled. kFlush bounds the wait for a reader that moves, kStart
// the wait for a thread that the system has not scheduled yet.
constexpr std::chrono::milliseconds kStall{250}, kFlush{1000}, kStart{5000};
// A pipe that can be written to has space for so many bytes; they are written as a whole.
constexpr std::size_t kChunk = 4096;
constexpr std::size_t kMostAtOnce = 16384;  // bytes that leave the queue together

bool IsRegular(int file) {
  struct stat status = {};
  return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

struct CPiece {
  int file;
  std::string text;
};

std::string MarkOf(std::uint64_t dropped) {
  return std::to_string(dropped) + (dropped == 1 ? " line dropped\n" : " lines dropped\n");
}

// Up to kChunk bytes of text, whole lines if there is one.
std::size_t ChunkOf(const std::string& text, std::size_t from) {
  if (text.size() - from <= kChunk) return text.size() - from;
  const std::size_t end = text.rfind('\n', from + kChunk - 1);
  return end == std::string::npos || end < from ? kChunk : end + 1 - from;
}

}  // namespace

struct CLineQueue::CState {
  explicit CState(int ownFile) : file(ownFile), waitsForSpace(IsRegular(ownFile)) {}

  struct CLine {
    std::string text;
    std::uint64_t dropped = 0;  // not 0: a mark in place of so many lines
  };

  bool HasWork() const { return !lines.empty() || wanted != shown; }
  bool HasSpace(std::size_t size) const {
    return lines.empty() || (lines.size() < kMostLines && bytes + size <= kMostBytes);
  }
  bool HasStalled() const { return isWaiting && Clock::now() - moved >= kStall; }
  void Put(const std::string& text, std::uint64_t dropped = 0);
  void Drop();
  void Wake(const std::shared_ptr<CState>& self, Guard& lock);
  void WriteNext(Guard& lock);
  std::string TakeLines();
  std::vector<CPiece> Take();
  bool WriteAll(const CPiece& piece);
  void NoteMove();

  const int file;
  const bool waitsForSpace;
  mutable std::mutex mutex;  // of all that follows
  std::condition_variable added, written;
  std::deque<CLine> lines;
  std::size_t bytes = 0;  // of the lines
  std::vector<std::string> wanted, shown;
  int statusFile = -1;
  bool hasThread = false;
  bool isClosed = false;        // the queue was destroyed
  bool isWriting = false;       // what has left the queue is not written yet
  bool isWaiting = false;       // for the reader, since moved
  Clock::time_point moved{};    // when the last bytes were written
  std::uint64_t underWay = 0;   // lines that have left the queue and are not written yet
  std::uint64_t unwritten = 0;  // lines that failed writes have lost and no mark has told yet
  int fault = 0;
};

void CLineQueue::CState::Put(const std::string& text, std::uint64_t dropped) {
  lines.push_back({text, dropped});
  bytes += text.size();
}

void CLineQueue::CState::Drop() {
  if (lines.empty() || !lines.back().dropped) Put({});
  ++lines.back().dropped;
}

std::string CLineQueue::CState::TakeLines() {
  std::string text = unwritten ? MarkOf(unwritten) : "";
  underWay = std::exchange(unwritten, 0);
  while (!lines.empty() && text.size() < kMostAtOnce) {
    const CLine& line = lines.front();
    text += line.dropped ? MarkOf(line.dropped) : line.text + "\n";
    underWay += std::max<std::uint64_t>(line.dropped, 1);
    bytes -= line.text.size();
    lines.pop_front();
  }
  return text;
}

// What is to be written next: lines, and around them the status.
std::vector<CPiece> CLineQueue::CState::Take() {
  std::vector<CPiece> pieces;
  const std::string home = Home(shown), text = lines.empty() ? "" : TakeLines();
  if (text.empty()) {
    pieces.push_back({statusFile, home + Drawn(wanted) + kEraseBelow});
  } else {
    if (!shown.empty()) pieces.push_back({statusFile, home + kEraseBelow});
    pieces.push_back({file, text});
    if (!wanted.empty()) pieces.push_back({statusFile, Drawn(wanted)});
  }
  shown = wanted;
  return pieces;
}

void CLineQueue::CState::NoteMove() {
  const Guard lock(mutex);
  moved = Clock::now();
}

// Waits for the reader before each write, and again if another process has made the file non-blocking.
bool CLineQueue::CState::WriteAll(const CPiece& piece) {
  for (std::size_t done = 0; done < piece.text.size(); NoteMove()) {
    pollfd ready = {piece.file, POLLOUT, 0};
    ::poll(&ready, 1, -1);
    const ssize_t part = ::write(piece.file, piece.text.data() + done, ChunkOf(piece.text, done));
    if (part < 0 && errno != EINTR && errno != EAGAIN) return false;
    if (part > 0) done += static_cast<std::size_t>(part);
  }
  return true;
}

// Writes what is there, without the lock.
void CLineQueue::CState::WriteNext(Guard& lock) {
  const std::vector<CPiece> pieces = Take();
  isWriting = isWaiting = true;
  moved = Clock::now();
  lock.unlock();
  const bool isWritten =
      std::all_of(pieces.begin(), pieces.end(), [this](const CPiece& piece) { return WriteAll(piece); });
  const int error = isWritten ? 0 : errno;
  lock.lock();
  fault = error;
  if (error) unwritten += underWay;
  underWay = 0;
  isWriting = isWaiting = false;
  written.notify_all();
}

// Starts the thread if there is none yet. A system without another thread has to wait for the reader here.
void CLineQueue::CState::Wake(const std::shared_ptr<CState>& self, Guard& lock) {
  try {
    if (!hasThread) std::thread(&CLineQueue::Write, self).detach();
    hasThread = true;
    added.notify_one();
  } catch (const std::exception&) {
    while (HasWork()) WriteNext(lock);
  }
}

CLineQueue::CLineQueue(int file) : m_state(std::make_shared<CState>(file)) {}

CLineQueue::~CLineQueue() {
  Drain();
  const Guard lock(m_state->mutex);
  m_state->isClosed = true;
  m_state->added.notify_one();
}

void CLineQueue::Write(const std::shared_ptr<CState>& state) {
  Guard lock(state->mutex);
  for (;;) {
    state->added.wait(lock, [&] { return state->isClosed || state->HasWork(); });
    if (!state->HasWork()) return;
    state->WriteNext(lock);
  }
}

void CLineQueue::Add(const std::string& line) {
  Guard lock(m_state->mutex);
  while (m_state->waitsForSpace && !m_state->HasSpace(line.size()) && !m_state->HasStalled())
    m_state->written.wait_for(lock, kStall);
  if (m_state->HasSpace(line.size()))
    m_state->Put(line);
  else
    m_state->Drop();
  m_state->Wake(m_state, lock);
}

void CLineQueue::SetStatus(std::vector<std::string> lines, int onFile) {
  Guard lock(m_state->mutex);
  m_state->wanted = std::move(lines);
  m_state->statusFile = onFile;
  if (m_state->HasWork()) m_state->Wake(m_state, lock);
}

void CLineQueue::Drain() {
  Guard lock(m_state->mutex);
  const Clock::time_point begin = Clock::now();
  while (m_state->isWriting || m_state->HasWork()) {
    if (m_state->HasStalled()) return;
    if (Clock::now() - begin >= (m_state->isWaiting ? kFlush : kStart)) return;
    m_state->written.wait_for(lock, kStall / 10);
  }
}

int CLineQueue::Fault() const {
  const Guard lock(m_state->mutex);
  return m_state->fault;
}

}  // namespace vastra
