#include "host/fleet/chunk_sender.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <tuple>
#include <utility>

#include "host/fleet/file_version.h"
#include "host/fleet/nats_faults.h"

namespace vastra {
namespace {

using std::chrono::milliseconds;

constexpr std::uint64_t kMostBytes = std::uint64_t{4} << 20, kFirstBytes = 2 * kChunkSize;
constexpr std::size_t kMostLiveSends = 4, kMostMessages = 256, kQueue = 2048, kMostPacked = 1000;
constexpr std::chrono::seconds kAnswerTime{60}, kQuickAnswer{2}, kSlowAnswer{5};
constexpr milliseconds kFirstBlock{500}, kLongestBlock{30000}, kStartPause{200};
constexpr std::int64_t kFirstLook = 30'000, kPutOff = 60'000;  // ms

// What is at path now, opened for reading; empty with the reason in errno if it is not this file any more.
std::optional<CDescriptor> OpenSame(const std::string& path, const CFileMark& mark) {
  CDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status = {};
  if (file.Get() < 0 || ::fstat(file.Get(), &status) != 0) return std::nullopt;
  errno = ESTALE;
  if (!S_ISREG(status.st_mode) || MarkOf(status) != mark) return std::nullopt;
  return file;
}

// Up to size bytes from place on; fewer, with the reason in errno, if the file is shorter or cannot be read.
std::string ReadAt(int file, std::uint64_t place, std::size_t size) {
  std::string bytes(size, '\0');
  std::size_t done = 0;
  errno = ESTALE;
  while (done < size) {
    const ssize_t read = ::pread(file, bytes.data() + done, size - done, static_cast<off_t>(place + done));
    if (read < 0 && errno == EINTR) continue;
    if (read <= 0) break;
    done += static_cast<std::size_t>(read);
  }
  bytes.resize(done);
  return bytes;
}

// The file with its present version.
CShipFile WithVersion(CShipFile file, const CVersion& version) {
  if (file.version != version) file.log.before = std::exchange(file.version, version);
  return file;
}

}  // namespace

CChunkSender::CChunkSender(CNatsLink& link, CShipState& state, const CLogFinder& finder,
                           const CFleetNode& node, std::uint64_t limit, CToldOnce& log)
    : m_link(link),
      m_state(state),
      m_finder(finder),
      m_node(node),
      m_limit(limit),
      m_log(log),
      m_window(kFirstBytes) {}

void CChunkSender::Work(Time now) {
  TakeBack(now);
  while (MayPublish(now) && PublishNext(now)) {
  }
}

CChunkSender::Time CChunkSender::Due(Time now) const {
  if (m_blocked > now) return m_blocked;
  if (m_limit > 0 && m_allowance <= 0)
    return now +
           milliseconds(1 + static_cast<std::int64_t>(-1000 * m_allowance / static_cast<double>(m_limit)));
  return now + std::chrono::seconds(1);
}

bool CChunkSender::MayPublish(Time now) {
  if (m_limit > 0) {
    const std::chrono::duration<double> passed = now - m_filled;
    const double limit = static_cast<double>(m_limit);
    m_allowance = std::min(limit, m_allowance + passed.count() * limit);
    m_filled = now;
  }
  return m_link.IsUp() && now >= m_blocked && (m_limit == 0 || m_allowance > 0) &&
         m_bytesUnderWay < m_window && m_underWay.size() < kMostMessages;
}

bool CChunkSender::PublishNext(Time now) {
  if (now >= m_startDue || NextSend() == nullptr) {
    m_startDue = now + kStartPause;
    if (Count(true) < kMostLiveSends) Start(true);
    if (Count(false) == 0) Start(false);
  }
  CSend* const send = NextSend();
  if (send == nullptr) return false;
  const auto number =
      std::find_if(m_sends.begin(), m_sends.end(), [&](auto& one) { return &one.second == send; });
  return Publish(number->first, *send, now);
}

// Of the sendings that have chunks left.
std::size_t CChunkSender::Count(bool isLive) const {
  return static_cast<std::size_t>(std::count_if(m_sends.begin(), m_sends.end(), [&](const auto& one) {
    return one.second.HasMore() && one.second.IsLive() == isLive;
  }));
}

// The last chunk of an older version must not come after a newer version: nothing more of it is sent, and
// the newer one waits until what is on the way has its answers. Returns whether something is.
bool CChunkSender::CancelOlder(const std::string& key) {
  bool isUnderWay = false;
  for (auto one = m_sends.begin(); one != m_sends.end();) {
    const auto next = std::next(one);
    CSend& send = one->second;
    const auto isSame = [&](const CShipFile& file) { return file.key == key; };
    if (std::any_of(send.files.begin(), send.files.end(), isSame)) {
      if (send.files.size() == 1) Cancel(send);
      if (send.HasMore() || send.underWay > 0)
        isUnderWay = true;
      else
        Finish(one->first);
    }
    one = next;
  }
  return isUnderWay;
}

void CChunkSender::Cancel(CSend& send) {
  send.isCancelled = true;
  send.next = send.end;
  send.again.clear();
}

// Chunks that were asked for first, then live files, then the backlog; of live files the one that ends first.
CChunkSender::CSend* CChunkSender::NextSend() {
  constexpr std::uint64_t kShare = 8;  // one message in so many is of the backlog
  const bool isForBacklog = m_lastMessage % kShare == kShare - 1;
  const auto rank = [&](const CSend& one) {
    const std::uint64_t left = one.end - one.next + one.again.size();
    return std::tuple(one.IsLive() == isForBacklog, !one.isExtra, one.IsLive() ? left : 0);
  };
  CSend* best = nullptr;
  for (auto& [number, send] : m_sends)
    if (send.HasMore() && (best == nullptr || rank(send) < rank(*best))) best = &send;
  return best;
}

void CChunkSender::Start(bool isLive) {
  std::deque<CShipFile>& queue = m_queues[isLive ? 1 : 0];
  if (queue.empty())
    for (CShipFile& file : m_state.Waiting(isLive, WallClock(), kQueue)) queue.push_back(std::move(file));
  for (bool isStarted = false; !isStarted && !queue.empty();) {
    std::vector<CShipFile> files;
    std::size_t room = kChunkSize;
    while (!queue.empty() && files.size() < kMostPacked) {
      const CShipFile& next = queue.front();
      const std::size_t need = RoomInPack(next.key.size(), next.mark.size, next.log);
      if (!files.empty() && (next.mark.size > kSmallFile || need > room)) break;
      room -= std::min(room, need);
      files.push_back(next);
      queue.pop_front();
      if (files.front().mark.size > kSmallFile) break;
    }
    isStarted = files.size() > 1 ? StartPack(std::move(files)) : StartFile(std::move(files.front()));
  }
}

bool CChunkSender::StartPack(std::vector<CShipFile> files) {
  CSend send;
  std::vector<std::string> contents;
  contents.reserve(files.size());  // views of them are in packed
  std::vector<CPackedFile> packed;
  for (CShipFile& file : files) {
    const std::optional<CShipFile> row = m_state.Find(file.key);
    if (!row || row->state != EShipped::waiting || row->mark != file.mark || CancelOlder(file.key)) continue;
    const std::optional<CDescriptor> opened = OpenSame(m_finder.PathOf(file.key), file.mark);
    std::string bytes = opened ? ReadAt(opened->Get(), 0, file.mark.size) : "";
    if (!opened || bytes.size() != file.mark.size) {
      PutOff(*row);
      continue;
    }
    contents.push_back(std::move(bytes));
    const CVersion version = VersionOf(contents.back());
    send.files.push_back(WithVersion(*row, version));
    packed.push_back({file.key, version, contents.back(), send.files.back().log});
  }
  if (packed.empty()) return false;
  if (packed.size() == 1) {
    send.size = contents.front().size();
    send.message = MakeChunk({0, send.size, contents.front(), packed.front().log});
    send.subject = {{m_node, packed.front().key}, packed.front().version};
  } else {
    send.message = MakePack(packed);
    send.subject = {{m_node, ""}, VersionOf(send.message)};
  }
  send.end = 1;
  Add(std::move(send));
  return true;
}

bool CChunkSender::StartFile(CShipFile file) {
  if (file.mark.size <= kSmallFile) return StartPack({std::move(file)});
  const std::optional<CShipFile> row = m_state.Find(file.key);
  if (!row || row->state != EShipped::waiting || row->mark != file.mark || CancelOlder(file.key))
    return false;
  std::optional<CDescriptor> opened = OpenSame(m_finder.PathOf(file.key), file.mark);
  const std::optional<CVersion> version = opened ? VersionOfFile(opened->Get()) : std::nullopt;
  if (!version) {
    PutOff(*row);
    return false;
  }
  CSend send;
  send.files = {WithVersion(*row, *version)};
  send.subject = {{m_node, file.key}, *version};
  send.file = std::move(*opened);
  send.size = file.mark.size;
  send.end = ChunksOf(file.mark.size);
  Add(std::move(send));
  return true;
}

// errno says why: a file that has changed or gone is found by the next walk, and told there.
void CChunkSender::PutOff(const CShipFile& file) {
  const int fault = errno;
  std::optional<CShipFile> row = m_state.Find(file.key);
  if (fault != ESTALE && fault != ENOENT)
    m_log.Tell(m_finder.PathOf(file.key) + ": cannot be read, tried again: " + std::strerror(fault));
  if (!row || row->mark != file.mark) return;
  row->state = EShipped::waiting;
  row->due = WallClock() + kPutOff;
  m_state.Put(*row);
}

std::uint64_t CChunkSender::Add(CSend send) {
  for (CShipFile& file : send.files) {
    if (send.isExtra) continue;
    std::optional<CShipFile> row = m_state.Find(file.key);
    // Another content than before: messages with what was sent before are those of another version now.
    if (row->version != file.version) {
      row->others = std::max(row->others, row->sequence);
      row->sequence = 0;
      row->hasReceipt = false;
      row->version = file.version;
      row->log = file.log;
    }
    row->carrier = send.subject.version;
    row->state = EShipped::sending;
    m_state.Put(*row);
    file = *row;
  }
  m_sends.emplace(++m_lastSend, std::move(send));
  return m_lastSend;
}

bool CChunkSender::Publish(std::uint64_t number, CSend& send, Time now) {
  const bool isAgain = !send.again.empty();
  const std::uint64_t chunk = isAgain ? send.again.back() : send.next;
  const std::string message = MessageOf(send, chunk);
  if (message.empty()) {  // the file has become shorter, or cannot be read
    if (!send.isExtra) PutOff(send.files.front());
    Cancel(send);
    if (send.underWay == 0) m_sends.erase(number);
    return true;
  }
  CFileSubject subject = send.subject;
  subject.chunk = chunk;
  if (!m_link.Publish(SubjectOf(EFileSubject::log, subject), message,
                      m_link.AnswerSubject(kKind) + std::to_string(m_lastMessage + 1)))
    return false;
  if (isAgain)
    send.again.pop_back();
  else
    ++send.next;
  ++send.underWay;
  m_underWay.emplace(++m_lastMessage, CUnderWay{number, chunk, message.size(), now});
  m_bytesUnderWay += message.size();
  m_bytes += message.size();
  m_allowance -= static_cast<double>(message.size());
  return true;
}

std::string CChunkSender::MessageOf(CSend& send, std::uint64_t chunk) {
  if (!send.message.empty()) return send.message;
  const std::uint64_t place = chunk * kChunkSize;
  const std::size_t size = std::min<std::uint64_t>(kChunkSize, send.size - place);
  const std::string bytes = ReadAt(send.file.Get(), place, size);
  return bytes.size() == size ? MakeChunk({chunk, send.size, bytes, send.files.front().log}) : "";
}

void CChunkSender::Hear(const CNatsMessage& answer, Time now) {
  const auto found = m_underWay.find(AnswerNumber(answer));
  if (found == m_underWay.end()) return;
  const CUnderWay underWay = found->second;
  m_underWay.erase(found);
  m_bytesUnderWay -= underWay.bytes;
  Adapt(underWay, now);
  const auto send = m_sends.find(underWay.send);
  if (send == m_sends.end()) return;
  --send->second.underWay;
  const CStoredAnswer stored = ParseStored(answer);
  if (stored.sequence != 0 || stored.IsRepeated()) {
    send->second.sequence = std::max(send->second.sequence, stored.sequence);
    m_block = {};
  } else {
    m_log.Tell("the servers do not take a chunk, tried again: " + FaultWords(stored.text));
    if (!send->second.isCancelled) send->second.again.push_back(underWay.chunk);
    m_block = std::clamp(2 * m_block, kFirstBlock, kLongestBlock);
    m_blocked = now + m_block;
  }
  if (!send->second.HasMore() && send->second.underWay == 0) Finish(underWay.send);
}

// Answers come within some seconds also over a slow line, so that what is live need not wait for long.
void CChunkSender::Adapt(const CUnderWay& answered, Time now) {
  const auto delay = now - answered.sent;
  if (delay < kQuickAnswer) {
    m_window = std::min(kMostBytes, m_window + answered.bytes);
  } else if (delay > kSlowAnswer && answered.sent > m_narrowed) {
    Narrow(now);
  }
}

void CChunkSender::Narrow(Time now) {
  m_window = std::max<std::uint64_t>(1, m_window / 2);
  m_narrowed = now;
}

// Messages without an answer are sent again: those of an earlier connection, and those that are old. A repeat
// is refused by the servers.
void CChunkSender::TakeBack(Time now) {
  const bool isNew = m_connection != m_link.Connections();
  if (isNew && m_connection > 0)
    Narrow(now);  // the line can have been too slow for the servers' answers to a ping
  m_connection = m_link.Connections();
  for (auto one = m_underWay.begin(); one != m_underWay.end();) {
    if (!isNew && now - one->second.sent < kAnswerTime) break;  // in the order of their time
    if (const auto send = m_sends.find(one->second.send); send != m_sends.end()) {
      --send->second.underWay;
      if (!send->second.isCancelled) send->second.again.push_back(one->second.chunk);
      if (!send->second.HasMore() && send->second.underWay == 0) Finish(send->first);
    }
    m_bytesUnderWay -= one->second.bytes;
    one = m_underWay.erase(one);
  }
}

void CChunkSender::Finish(std::uint64_t number) {
  const CSend send = std::move(m_sends.at(number));
  m_sends.erase(number);
  for (const CShipFile& file : send.files) NoteSent(send, file);
}

void CChunkSender::NoteSent(const CSend& send, CShipFile file) {
  std::optional<CShipFile> row = m_state.Find(file.key);
  if (!row) return;
  if (row->version != file.version) {
    row->others = std::max(row->others, send.sequence);
    m_state.Put(*row);
    return;
  }
  if (send.sequence != 0) row->sequence = send.sequence;
  // Sequences grow while the stream exists. A smaller one means a new stream: sequences of the old one are
  // void.
  if (send.sequence != 0 && send.sequence < row->others) row->others = 0;
  const std::int64_t now = WallClock();
  row->sent = now;
  struct stat status = {};
  const bool isSame =
      send.file.Get() < 0 || (::fstat(send.file.Get(), &status) == 0 && MarkOf(status) == file.mark);
  if (row->state == EShipped::sending && !send.isCancelled) {
    row->state = isSame ? EShipped::sent : EShipped::waiting;
    row->pause = std::max(row->pause, kFirstLook);
    row->due = isSame ? now + row->pause : now;
  }
  m_state.Put(*row);
}

void CChunkSender::SendAgain(const CShipFile& file, std::uint64_t chunk) {
  if (chunk >= ChunksOf(file.mark.size) || m_sends.size() > kMostMessages) return;
  std::optional<CDescriptor> opened = OpenSame(m_finder.PathOf(file.key), file.mark);
  if (!opened) return;
  CSend send;
  send.isExtra = true;
  send.files = {file};
  send.subject = {{m_node, file.key}, file.version};
  send.file = std::move(*opened);
  send.size = file.mark.size;
  send.next = chunk;
  send.end = chunk + 1;
  Add(std::move(send));
}

}  // namespace vastra
