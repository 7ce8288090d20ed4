#include "host/fleet/archiver.h"

#include <charconv>
#include <filesystem>

#include "host/fleet/fleet_streams.h"

namespace vastra {
namespace {

constexpr std::size_t kBatch = 512;
constexpr std::size_t kMostFiles = 5000;  // taken together: many small ones fit into few messages
constexpr std::int64_t kBatchBytes = std::int64_t{8} << 20, kSecondNs = 1'000'000'000;
constexpr std::chrono::seconds kPullTime{10}, kSetUpPause{1}, kPatience{5}, kDiskPause{2}, kTurn{1};
constexpr std::chrono::seconds kFirstAsk{2}, kLongestAsk{600}, kStaleTurn{3600};
constexpr std::size_t kMostAsked = 10000, kMostChunksAsked = 64;
constexpr const char* kPullKind = "pull";
constexpr std::int64_t kAckWait = 60 * kSecondNs, kMostUnacknowledged = 4 * kBatch;

std::string ConsumerName(const std::string& site) {
  return site.empty() ? "archive" : "archive-" + Token(site);
}

CJson ConsumerConfig(const std::string& site) {
  return {{"durable_name", ConsumerName(site)},
          {"ack_policy", "explicit"},
          {"deliver_policy", "all"},
          {"ack_wait", kAckWait},
          {"max_deliver", -1},
          {"max_ack_pending", kMostUnacknowledged},
          {"filter_subject", "vastra.log." + (site.empty() ? ">" : Token(site) + ".>")}};
}

// The number of the message in its stream, from the subject of its acknowledgement:
// $JS.ACK.STREAM.CONSUMER.DELIVERED.SEQUENCE.CONSUMER-SEQUENCE.TIME.PENDING, or with a domain and an account
// before the stream and a token at the end.
std::uint64_t SequenceOf(std::string_view reply) {
  const std::vector<std::string_view> tokens = TokensOf(reply);
  constexpr std::size_t kShort = 9, kPlace = 5, kLongPlace = 7;
  const std::size_t place = tokens.size() == kShort ? kPlace : kLongPlace;
  std::uint64_t sequence = 0;
  if (tokens.size() >= kShort)
    std::from_chars(tokens[place].data(), tokens[place].data() + tokens[place].size(), sequence);
  return sequence;
}

std::string StateFile(const CArchiverOptions& options) {
  std::filesystem::create_directories(options.state);
  return options.state + "/archive.db";
}

}  // namespace

CArchiver::CArchiver(CNatsLink& link, const CArchiverOptions& options, CToldOnce& log)
    : m_link(link),
      m_log(log),
      m_site(options.site),
      m_tree(options.into),
      m_record(StateFile(options)),
      m_intake(m_tree, m_record, [&log](const std::string& line) { log.Tell(line); }),
      m_receipts(link, m_record) {}

void CArchiver::Run(const std::atomic<bool>& end) {
  while (!end) {
    Time now = std::chrono::steady_clock::now();
    for (const std::string& fault : m_link.TakeFaults()) m_log.Tell("servers: " + fault);
    SetUp(now);
    Pull(now);
    for (CNatsMessage& message : m_link.Take(m_batch.empty() ? now + kTurn : now)) Hear(std::move(message));
    now = std::chrono::steady_clock::now();
    TakeBatch(now);
    AskAgain(now);
    Keep(now);
  }
}

void CArchiver::Keep(Time now) {
  try {
    if (const std::string fault = m_receipts.Work(now); !fault.empty()) m_log.Tell(fault);
    if (now < m_staleDue) return;
    m_staleDue = now + kStaleTurn;
    m_intake.DropStale();
  } catch (const CStoreFault& fault) {
    m_log.Tell(fault.what());
  }
}

// The stream and the consumer are looked at again with each connection: the servers may have been wiped.
void CArchiver::SetUp(Time now) {
  if (m_connection != m_link.Connections()) m_isReady = false;
  if (m_isReady || now < m_setUpDue || !m_link.IsUp()) return;
  m_setUpDue = now + kSetUpPause;
  const unsigned connection = m_link.Connections();
  try {
    const nlohmann::json info = m_link.Ask(StreamRequest("INFO", kLogStream), nullptr, kPatience);
    const std::string made = info.value("created", std::string());
    const std::uint64_t last = info.at("state").value("last_seq", std::uint64_t{0});
    m_link.Ask(std::string("$JS.API.CONSUMER.DURABLE.CREATE.") + kLogStream + "." + ConsumerName(m_site),
               {{"stream_name", kLogStream}, {"config", ConsumerConfig(m_site)}}, kPatience);
    m_stream = m_record.NumberOfStream(made, last);
    m_connection = connection;
    m_isReady = true;
    m_wanted = 0;
  } catch (const CNatsFault& fault) {
    m_log.Tell(fault.what());
  } catch (const std::exception& fault) {  // of the answer, or of the record
    m_log.Tell(std::string(kLogStream) + ": " + fault.what());
  }
}

void CArchiver::Pull(Time now) {
  if (!m_isReady || !m_batch.empty() || (m_wanted > 0 && now < m_pullEnd)) return;
  const CJson wish = {{"batch", kBatch},
                      {"max_bytes", kBatchBytes},
                      {"expires", std::chrono::nanoseconds(kPullTime).count()}};
  if (!m_link.Publish(std::string("$JS.API.CONSUMER.MSG.NEXT.") + kLogStream + "." + ConsumerName(m_site),
                      JsonText(wish), m_link.AnswerSubject(kPullKind) + "1"))
    return;
  m_wanted = kBatch;
  m_pullEnd = now + kPullTime + kPatience;
}

void CArchiver::Hear(CNatsMessage message) {
  const std::string_view subject = message.Subject();
  if (subject.starts_with(m_link.AnswerSubject(kPullKind))) {
    HearPull(message);
  } else if (subject.starts_with(m_link.AnswerSubject(CReceiptSender::kKind))) {
    if (const std::string fault = m_receipts.Hear(message); !fault.empty()) m_log.Tell(fault);
  } else if (message.Reply().starts_with("$JS.ACK.")) {
    if (m_wanted > 0) --m_wanted;
    m_batch.push_back(std::move(message));
  }
}

// The request has ended: with time-out, or with as many bytes as it may have; or the consumer is gone.
void CArchiver::HearPull(const CNatsMessage& status) {
  const std::string_view code = status.Header("Status");
  m_wanted = 0;
  if (code == "400" || status.Header("Description").starts_with("Exceeded")) {
    m_log.Tell("servers: " + std::string(status.Header("Description")));
    m_isReady = false;  // with a pause
  }
  const bool isChanged = code == "409" && status.Header("Description").starts_with("Consumer");
  if (isChanged)
    m_log.Tell("servers: " + std::string(status.Header("Description")) + ": " + ConsumerName(m_site) +
               " of the stream " + kLogStream + "; it is made again");
  if (code == "503" || isChanged) m_isReady = false;
}

// All that came, or its first part.
void CArchiver::TakeBatch(Time now) {
  if (m_batch.empty()) return;
  try {
    std::size_t taken = 0;
    while (taken < m_batch.size() && m_intake.Count() < kMostFiles) TakeOne(m_batch[taken++], now);
    m_receipts.Send(m_intake.Finish(), now);
    for (; taken > 0; --taken, m_batch.pop_front())
      m_link.Publish(std::string(m_batch.front().Reply()), "+ACK");
    return;
  } catch (const std::system_error& fault) {
    m_log.Tell(std::string("the archive does not take it, tried again: ") + fault.what());
  } catch (const CStoreFault& fault) {
    m_log.Tell(std::string("the archive does not take it, tried again: ") + fault.what());
  }
  const CJson pause = {{"delay", std::chrono::nanoseconds(kDiskPause).count()}};
  for (const CNatsMessage& message : m_batch)
    m_link.Publish(std::string(message.Reply()), "-NAK " + JsonText(pause));
  m_batch.clear();
  try {
    m_intake.GiveBack();
  } catch (const std::exception& fault) {
    m_log.Tell(fault.what());
  }
}

// A damaged message is removed from the stream like the others, and asked for again after that.
void CArchiver::TakeOne(const CNatsMessage& message, Time now) {
  const std::optional<CFileSubject> subject = ParseFileSubject(EFileSubject::log, message.Subject());
  if (!subject) {
    m_log.Tell(std::string(message.Subject()) + ": is not the name of a file, left out");
    return;
  }
  try {
    m_intake.Take(*subject, message.Data(), {m_stream, SequenceOf(message.Reply())});
    m_asked.erase(SubjectOf(EFileSubject::ask, *subject));
  } catch (const CChunkFault& fault) {
    m_log.Tell(subject->file.Path() + ", chunk " + std::to_string(subject->chunk) + ": " + fault.Text() +
               "; asked for again");
    AskLater(*subject, now);
  }
}

void CArchiver::AskLater(const CFileSubject& subject, Time now) {
  if (m_asked.size() < kMostAsked)
    m_asked.try_emplace(SubjectOf(EFileSubject::ask, subject), CAsked{subject, now + kFirstAsk, kFirstAsk});
}

void CArchiver::AskAgain(Time now) {
  if (now < m_askDue || !m_isReady) return;
  m_askDue = now + kTurn;
  for (const CPartialFile* const partial : m_intake.Waiting()) {
    if (m_asked.size() >= kMostAsked) break;
    for (const std::uint64_t chunk : partial->Missing(kMostChunksAsked))
      AskLater({partial->stored.file, partial->stored.version, chunk}, now);
  }
  for (auto& [subject, asked] : m_asked) {
    if (now < asked.due) continue;
    m_link.Publish(subject, "");
    asked.pause = std::min(2 * asked.pause, kLongestAsk);
    asked.due = now + asked.pause;
  }
  // A chunk that is asked for in vain makes room for others; its file begins with it again.
  std::erase_if(m_asked, [](const auto& one) { return one.second.pause >= kLongestAsk; });
}

}  // namespace vastra
