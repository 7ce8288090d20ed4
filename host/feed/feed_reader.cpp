#include "host/feed/feed_reader.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "host/common/json_text.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t kLongestLine = std::size_t{64} << 10;  // of a reader
constexpr std::size_t kBatch = std::size_t{64} << 10;
constexpr milliseconds kGrace{200};        // for the first request
constexpr milliseconds kRequestPause{50};  // between two requests
constexpr int kRequestShare = 100;         // of the time, that requests of one reader may cost
constexpr milliseconds kStatePause{5000}, kCountsPause{1000};
constexpr std::chrono::seconds kLongestStall{10};

}  // namespace

CFeedReader::CFeedReader(CDescriptor socket, CFeedContent& content, Time now)
    : m_socket(std::move(socket)),
      m_content(content),
      m_beginDue(now + kGrace),
      m_log(content.Logs().Next()) {}

short CFeedReader::Events(Time now) const {
  const bool reads = !m_isInputOver && !m_isOver && now >= m_readDue && m_input.size() <= kLongestLine;
  const bool sends = !m_output.empty() || m_hasMore;
  return static_cast<short>((reads ? POLLIN : 0) | (sends ? POLLOUT : 0));
}

bool CFeedReader::Work(short ready, Time now) {
  if (ready & (POLLHUP | POLLERR | POLLNVAL)) return false;
  if (ready & POLLIN) Receive();
  if (const CString fault = m_content.Fault(); !m_isOver && !fault.IsEmpty()) Refuse(fault);
  if (!m_isOver && now >= m_readDue) TakeLine(now);
  if (m_output.empty() && !m_isOver) Fill(now);
  if (!Send(now)) return false;
  return m_output.empty() ? !m_isOver : now - m_progress < kLongestStall;
}

void CFeedReader::Receive() {
  char bytes[4096];
  const ssize_t count = ::recv(m_socket.Get(), bytes, sizeof bytes, MSG_DONTWAIT);
  if (count > 0) m_input.append(bytes, static_cast<std::size_t>(count));
  if (count == 0) m_isInputOver = true;
}

// Takes one line. How soon the next one is taken depends on what this one has cost.
void CFeedReader::TakeLine(Time now) {
  const std::size_t end = m_input.find('\n');
  if (end > kLongestLine && m_input.size() > kLongestLine)
    return Refuse("the line has more than 65536 bytes");
  if (end == m_input.npos) return;
  const std::string line = m_input.substr(0, end);
  m_input.erase(0, end + 1);
  const Time begin = Clock::now();
  TakeRequest(line);
  m_readDue = now + std::max<Clock::duration>(kRequestPause, kRequestShare * (Clock::now() - begin));
}

// A line that is wanted from now on begins with the oldest one that is kept.
void CFeedReader::TakeRequest(const std::string& line) try {
  const CFeedRequest before = std::exchange(m_request, ParseFeedRequest(line));
  m_beginDue = {};
  m_stateDue = m_countsDue = m_sampleDue = {};
  if (!before.Wants(CFeedRequest::message)) m_message = std::max(m_message, m_content.Messages().Oldest());
  if (!before.Wants(CFeedRequest::log)) m_log = m_content.Logs().Next();
  if (m_request.variables) m_indexes = m_content.IndexesOf(*m_request.variables);
} catch (const CJsonFault& fault) {
  Refuse(fault.Text());
}

void CFeedReader::Refuse(const CString& text) {
  m_isOver = true;
  m_input.clear();
  Add(std::make_shared<const std::string>(ErrorLine(text)));
}

void CFeedReader::Add(CFeedLine line) {
  if (!line) return;
  m_batch += line->size();
  m_output.push_back(std::move(line));
}

bool CFeedReader::TakeDue(Time& due, milliseconds pause) const {
  const Time now = m_content.RefreshedAt();
  if (now < due) return false;
  due = (due + pause > now ? due : now) + pause;  // a schedule, unless it was missed
  return true;
}

void CFeedReader::Fill(Time now) {
  m_hasMore = false;
  m_progress = now;
  AddHello();
  if (now < m_beginDue) return;
  AddState();
  AddMessages();
  if (m_request.Wants(CFeedRequest::log)) AddLines(m_content.Logs(), m_log, "logs");
  AddCounts();
  AddSample();
}

void CFeedReader::AddHello() {
  if (m_hello == m_content.HelloChange()) return;
  m_hello = m_content.HelloChange();
  if (m_request.variables) m_indexes = m_content.IndexesOf(*m_request.variables);
  Add(m_content.Hello());
}

// With a mark after those that were kept before.
void CFeedReader::AddMessages() {
  if (!m_request.Wants(CFeedRequest::message)) return;
  AddLines(m_content.Messages(), m_message, "messages");
  if (m_hasMore || std::exchange(m_hasKept, true)) return;
  Add(std::make_shared<const std::string>(JsonLine({{"type", "kept"}})));
}

void CFeedReader::AddState() {
  if (!m_request.Wants(CFeedRequest::state)) return;
  const bool isOther = m_state != m_content.StateChange();
  if (!TakeDue(m_stateDue, kStatePause) && !isOther) return;
  m_state = m_content.StateChange();
  Add(m_content.State());
}

void CFeedReader::AddCounts() {
  if (m_request.Wants(CFeedRequest::counts) &&
      TakeDue(m_countsDue, std::max(m_request.interval, kCountsPause)))
    Add(m_content.Counts());
}

void CFeedReader::AddSample() {
  const std::uint64_t number = m_content.SampleNumber();
  const bool isNew = number != 0 && (number != m_sample || m_sampleNames != m_content.NamesChange());
  if (!isNew || !m_request.Wants(CFeedRequest::sample) || !TakeDue(m_sampleDue, m_request.interval)) return;
  m_sample = number;
  m_sampleNames = m_content.NamesChange();
  Add(m_request.variables ? m_content.Sample(m_indexes) : m_content.Sample());
}

// Adds lines up to a batch.
void CFeedReader::AddLines(CFeedRecords& records, std::uint64_t& cursor, const char* key) {
  while (m_batch < kBatch) {
    std::uint64_t missed = 0;
    CFeedLine line = records.Take(cursor, missed);
    if (!line) return;
    if (missed) Add(std::make_shared<const std::string>(DroppedLine(key, missed)));
    Add(std::move(line));
  }
  m_hasMore = true;
}

// Sends what the connection accepts. False: it has failed.
bool CFeedReader::Send(Time now) {
  while (m_next < m_output.size()) {
    const std::string& line = *m_output[m_next];
    const ssize_t count =
        ::send(m_socket.Get(), line.data() + m_sent, line.size() - m_sent, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count < 0) return errno == EAGAIN || errno == EINTR;
    m_progress = now;
    m_sent += static_cast<std::size_t>(count);
    if (m_sent < line.size()) continue;
    m_sent = 0;
    m_output[m_next++].reset();
  }
  m_output.clear();
  m_next = m_batch = 0;
  return true;
}

}  // namespace vastra
