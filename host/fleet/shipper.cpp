#include "host/fleet/shipper.h"

#include <filesystem>

#include "host/common/shown_text.h"
#include "host/fleet/fleet_streams.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kReportTurn{10}, kNoReportTurn{1}, kStuck{300};
constexpr std::chrono::milliseconds kPause{60000}, kNoPause{0};  // between two versions of a name
constexpr std::chrono::milliseconds kCommitTurn{500};  // what happens to a file within it is one write

std::string ShipStateFile(const CShipperOptions& options) {
  std::filesystem::create_directories(options.state);
  return options.state + "/ship.db";
}

CJson SumJson(const CShipState::CSum& sum) { return {{"files", sum.files}, {"bytes", sum.bytes}}; }

}  // namespace

CShipper::CShipper(CNatsLink& link, const CShipperOptions& options, CToldOnce& log)
    : m_link(link),
      m_log(log),
      m_node(options.node),
      m_isOnce(options.isOnce),
      m_state(ShipStateFile(options)),
      m_finder(options.folders, options.isCsv, [&log](const std::string& line) { log.Tell(line); }),
      m_files(m_finder, m_state, options.deleteAfter, options.isOnce ? kNoPause : kPause, log),
      m_sender(link, m_state, m_finder, options.node, options.limit, log),
      m_receipts(link, m_state, options.node, log) {
  // What is not taken in time is heard later: the receipts stay with the servers, and the archive asks again.
  m_link.ListenLossy(NodeSubject("done", m_node) + ".>");
  m_link.ListenLossy(NodeSubject("ask", m_node) + ".>");
  if (!options.isOnce && !options.feeds.empty())
    m_relay = std::make_unique<CLiveRelay>(link, options.node, options.feeds);
}

bool CShipper::Run(const std::atomic<bool>& end) {
  if (m_isOnce) m_state.MakeDue();
  while (!end) {
    const Time now = std::chrono::steady_clock::now();
    if (m_isOnce && (IsDone(now) || IsStuck(now))) break;
    for (const CNatsMessage& message : m_link.Take(NextTurn(now)))
      Hear(message, std::chrono::steady_clock::now());
    Turn(std::chrono::steady_clock::now());
  }
  m_state.Commit();
  m_reportDue = {};
  Report(std::chrono::steady_clock::now());
  m_log.Tell(Summary());
  return IsSent() && m_files.Unsettled() == 0;
}

std::string CShipper::Summary() const {
  const auto files = [&](EShipped state) { return m_state.Sum(state).files; };
  return Counted(files(EShipped::archived), "file") + " archived, " + std::to_string(files(EShipped::sent)) +
         " sent, " + std::to_string(files(EShipped::waiting) + files(EShipped::sending)) + " waiting; " +
         std::to_string(m_sender.Bytes()) + " bytes were sent";
}

void CShipper::Turn(Time now) {
  HearFaults();
  HearRelay(now);
  m_files.Work(now);
  m_sender.Work(now);
  m_receipts.Work(now);
  m_state.Commit(kCommitTurn);
  Report(now);
}

// Without the right to send logs a call that is to end would wait for ever.
void CShipper::HearFaults() {
  const std::string ownLogs = "Publish to \"" + NodeSubject("log", m_node) + ".>";
  for (const std::string& fault : m_link.TakeFaults()) {
    if (m_isOnce && fault.find(ownLogs) != std::string::npos) throw CNatsFault("servers: " + fault);
    m_log.Tell("servers: " + fault);
  }
}

// A log that a logger has closed is sent at once: the walk would find it later.
void CShipper::HearRelay(Time now) {
  if (!m_relay) return;
  for (const std::string& fault : m_relay->TakeFaults()) m_log.Tell(fault);
  for (const std::string& path : m_relay->TakeClosed()) m_files.Hint(path, now);
}

CShipper::Time CShipper::NextTurn(Time now) const {
  return std::min({m_files.Due(), m_sender.Due(now), m_reportDue});
}

bool CShipper::IsSent() const {
  return m_state.Sum(EShipped::waiting).files == 0 && m_state.Sum(EShipped::sending).files == 0;
}

// A file that cannot be read is tried again later, but not by a call that is to end.
bool CShipper::IsDone(Time now) {
  const bool isHeard = !m_link.IsUp() || (m_receipts.IsIdle() && m_state.Overdue(WallClock(), 1).empty());
  return m_files.IsComplete(now) && m_sender.IsIdle() && isHeard &&
         (IsSent() ||
          (m_state.Waiting(false, WallClock(), 1).empty() && m_state.Waiting(true, WallClock(), 1).empty()));
}

bool CShipper::IsStuck(Time now) {
  if (m_link.IsUp() && !m_sender.IsRefused()) m_taken = now;
  if (now - m_taken < kStuck) return false;
  m_log.Tell("the servers have taken nothing for five minutes: given up");
  return true;
}

void CShipper::Hear(const CNatsMessage& message, Time now) {
  const std::string_view subject = message.Subject();
  if (subject.starts_with(m_link.AnswerSubject(CChunkSender::kKind))) {
    m_sender.Hear(message, now);
  } else if (subject.starts_with(m_link.AnswerSubject(CReceiptHearer::kNewestKind))) {
    m_receipts.HearNewest(message);
  } else if (subject.starts_with(m_link.AnswerSubject(CReceiptHearer::kProbeKind))) {
    m_receipts.HearProbe(message);
  } else if (const std::vector<CReceipt> receipts = ParseReceipts(subject, message.Data());
             !receipts.empty() &&
             message.Header("Nats-Stream").empty()) {  // those of an archive have no headers
    for (const CReceipt& receipt : receipts) m_receipts.Hear(receipt);
  } else if (const std::optional<CFileSubject> asked = ParseFileSubject(EFileSubject::ask, subject)) {
    HearRequest(*asked);
  }
}

// The archive misses a chunk, or got a damaged one. What is on its way comes anyhow.
void CShipper::HearRequest(const CFileSubject& asked) {
  if (asked.file.node != m_node) return;
  if (asked.IsPack()) {
    m_state.MakePackWait(asked.version);
    return;
  }
  const std::optional<CShipFile> file = m_state.Find(asked.file.key);
  if (file && file->version == asked.version &&
      (file->state == EShipped::sent || file->state == EShipped::archived))
    m_sender.SendAgain(*file, asked.chunk);
}

void CShipper::Report(Time now) {
  if (now < m_reportDue) return;
  m_reportDue = now + (m_link.IsUp() ? kReportTurn : kNoReportTurn);
  constexpr double kNanoseconds = 1e9, kMilliseconds = 1e3;
  const std::optional<std::int64_t> oldest = m_state.Oldest();
  CJson report = {
      {"site", m_node.site},
      {"node", m_node.name},
      {"waiting", SumJson({m_state.Sum(EShipped::waiting).files + m_state.Sum(EShipped::sending).files,
                           m_state.Sum(EShipped::waiting).bytes + m_state.Sum(EShipped::sending).bytes})},
      {"sent", SumJson(m_state.Sum(EShipped::sent))},
      {"archived", SumJson(m_state.Sum(EShipped::archived))},
      {"oldest", nullptr},
      {"removed", m_files.Removed()},
      {"lost", m_files.Lost()}};
  if (oldest)
    report["oldest"] = std::max(
        0.0, static_cast<double>(WallClock()) / kMilliseconds - static_cast<double>(*oldest) / kNanoseconds);
  m_link.Publish(NodeSubject("status", m_node), JsonText(report));
}

}  // namespace vastra
