#include "host/desktop/message_writer.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "host/common/shown_text.h"

namespace vastra {
namespace {

using WriterClock = std::chrono::steady_clock;

constexpr std::chrono::seconds kRepeatPause{60};  // between two lines with the count of one message
constexpr std::chrono::seconds kRetryPause{5};    // after a failure
constexpr std::chrono::seconds kEndPatience{2};
constexpr std::size_t kMostQueued = 20000;       // lines that wait for the thread
constexpr std::size_t kMostUnwritten = 1 << 20;  // bytes that wait for the disk
constexpr std::size_t kBlock = 1 << 14;          // bytes that are appended at a time

}  // namespace

// What the thread works on. The thread shares it with the writer, since it can outlive the writer while the
// disk hangs.
class CMessageWriter::CWork {
 public:
  CWork(CMessageFiles files, std::size_t mostLines, std::vector<CLoggedMessage> moved,
        std::function<void()> wake)
      : m_files(std::move(files)),
        m_mostLines(mostLines),
        m_moved(std::move(moved)),
        m_wake(std::move(wake)) {}

  void Run() {
    CMessageFiles::CStored stored = m_files.Read(m_mostLines);
    AddMoved(stored);
    Deliver(m_stored, std::optional(std::move(stored)));
    do {
      Wait();
      for (const CLoggedMessage& line : std::exchange(m_taken, {})) Add(line);
      if (m_isLast || WriterClock::now() >= m_heldDue) AddHeld();
      if (m_isLast || WriterClock::now() >= m_retryDue) Write();
    } while (!m_isLast);
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_changed.notify_all();
  }

  void Put(std::vector<CLoggedMessage> lines) {
    const std::lock_guard lock(m_mutex);
    const std::size_t room = kMostQueued - std::min(kMostQueued, m_queue.size());
    const std::size_t count = std::min(room, lines.size());
    std::move(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(count), std::back_inserter(m_queue));
    m_leftOut += lines.size() - count;
    m_changed.notify_all();
  }

  // Returns whether the thread has ended.
  bool End() {
    std::unique_lock lock(m_mutex);
    m_wake = nullptr;
    m_isEnding = true;
    m_changed.notify_all();
    return m_changed.wait_for(lock, kEndPatience, [this] { return m_hasEnded; });
  }

  template <class WHAT>
  WHAT Take(WHAT CWork::*what) {
    const std::lock_guard lock(m_mutex);
    return std::exchange(this->*what, WHAT());
  }

  std::optional<CMessageFiles::CStored> m_stored;  // guarded by m_mutex
  CString m_fault;                                 // the same

 private:
  template <class WHAT>
  void Deliver(WHAT& what, WHAT value) {
    const std::lock_guard lock(m_mutex);
    what = std::move(value);
    if (m_wake) m_wake();
  }

  // Waits for lines, for the end, or until a held or an unwritten line is due.
  void Wait() {
    std::unique_lock lock(m_mutex);
    const auto isDue = [this] { return m_isEnding || !m_queue.empty(); };
    auto due = m_held.count > 0 ? m_heldDue : WriterClock::time_point::max();
    if (!m_unwritten.empty()) due = std::min(due, m_retryDue);
    if (due == WriterClock::time_point::max())
      m_changed.wait(lock, isDue);
    else
      m_changed.wait_until(lock, due, isDue);
    m_taken.swap(m_queue);
    m_lost += std::exchange(m_leftOut, 0);
    m_isLast = m_isEnding;
  }

  void AddMoved(const CMessageFiles::CStored& stored) {
    const CKnownMessages known(stored.lines);
    for (const CLoggedMessage& line : std::exchange(m_moved, {}))
      if (!known.Has(line)) Add(line);
  }

  // A message that repeats is written when it comes first, and then once a minute with its count.
  void Add(const CLoggedMessage& line) {
    if (!IsRepeat(m_held, line)) {
      AddHeld();
      m_held = line;
      return AddHeld();
    }
    if (m_held.count == 0) {
      m_held.first = line.first;
      m_heldDue = WriterClock::now() + kRepeatPause;
    }
    Fold(m_held, line);
  }

  void AddHeld() {
    if (m_held.count == 0) return;
    const std::string bytes = FileForm(m_held);
    if (m_unwritten.size() + bytes.size() <= kMostUnwritten)
      m_unwritten += bytes;
    else
      ++m_lost;
    m_held.count = 0;
    if (m_unwritten.size() >= kBlock && WriterClock::now() >= m_retryDue) Write();
  }

  // Appends what is not written yet, block by block, so that the bound of a file holds.
  void Write() {
    const std::size_t most = std::min(kBlock, m_files.MostAtOnce());
    while (!m_unwritten.empty()) {
      const std::size_t end = m_unwritten.rfind('\n', most - 1);
      const std::size_t size = (end == std::string::npos ? m_unwritten.find('\n') : end) + 1;
      const CString fault = m_files.Append(std::string_view(m_unwritten).substr(0, size));
      if (!fault.IsEmpty()) return Fail(fault);
      m_hasFailed = false;
      m_unwritten.erase(0, size);
      if (m_unwritten.empty() && m_lost > 0) m_unwritten = LostLine(std::exchange(m_lost, 0));
    }
  }

  static std::string LostLine(std::uint64_t lost) {
    return FileForm(DesktopLine(severityWarning, Counted(lost, "message") + " could not be written here"));
  }

  void Fail(const CString& fault) {
    m_retryDue = WriterClock::now() + kRetryPause;
    if (!std::exchange(m_hasFailed, true)) Deliver(m_fault, fault);
  }

  // Of the thread.
  CMessageFiles m_files;
  const std::size_t m_mostLines;
  std::vector<CLoggedMessage> m_moved, m_taken;
  CLoggedMessage m_held = {0, 0, 0, 0, {}, {}, {}};  // the last message; its count: since it was written
  WriterClock::time_point m_heldDue{}, m_retryDue{};
  std::string m_unwritten;
  std::uint64_t m_lost = 0;  // lines that are neither written nor in m_unwritten
  bool m_isLast = false, m_hasFailed = false;

  std::mutex m_mutex;  // of what follows
  std::condition_variable m_changed;
  std::function<void()> m_wake;
  std::vector<CLoggedMessage> m_queue;
  std::uint64_t m_leftOut = 0;
  bool m_isEnding = false, m_hasEnded = false;
};

CMessageWriter::CMessageWriter(CMessageFiles files, std::size_t mostLines, std::vector<CLoggedMessage> moved,
                               std::function<void()> wake)
    : m_pWork(std::make_shared<CWork>(std::move(files), mostLines, std::move(moved), std::move(wake))),
      m_thread([work = m_pWork] { work->Run(); }) {}

CMessageWriter::~CMessageWriter() { m_pWork->End() ? m_thread.join() : m_thread.detach(); }

void CMessageWriter::Put(std::vector<CLoggedMessage> lines) { m_pWork->Put(std::move(lines)); }

std::optional<CMessageFiles::CStored> CMessageWriter::TakeStored() { return m_pWork->Take(&CWork::m_stored); }

CString CMessageWriter::TakeFault() { return m_pWork->Take(&CWork::m_fault); }

}  // namespace vastra
