#include "host/fleet/receipt_hearer.h"

#include <algorithm>

#include "host/fleet/chunk.h"
#include "host/fleet/fleet_streams.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kHearTurn{1}, kAnswerPatience{5};
constexpr std::size_t kMostQuestions = 256;
constexpr std::int64_t kLongestPause = 3'600'000, kForeign = 60'000;  // ms

}  // namespace

// The receipt of an earlier message is ignored: it can be one of the archive before this one, or of the same
// content before another one replaced it.
void CReceiptHearer::Hear(const CReceipt& receipt) {
  if (receipt.subject.file.node != m_node) return;
  std::optional<CShipFile> file = m_state.Find(receipt.subject.file.key);
  if (!file || receipt.sequence < file->sequence || receipt.sequence <= file->others) return;
  if (m_state.SetArchive(receipt.archive)) {
    m_log.Tell("receipts come from another archive: all files are sent again");
    file = m_state.Find(receipt.subject.file.key);
  }
  if (receipt.subject.version == file->version) {
    file->hasReceipt = true;
    file->sequence = receipt.sequence;
    if (file->state == EShipped::sent || file->state == EShipped::sending) file->state = EShipped::archived;
  } else {
    file->others = receipt.sequence;
    if (file->state == EShipped::archived && receipt.sequence > file->sequence) {
      file->state = EShipped::waiting;  // the archive has another version as the newest
      file->hasReceipt = false;
      file->due = WallClock() + kForeign;
      m_log.Tell(file->key +
                 ": the archive got another version of it; sent again. Does another machine have the " +
                 "same --site and --node?");
    }
  }
  m_state.Put(*file);
}

std::string CReceiptHearer::TakeQuestion(CQuestions& questions, const CNatsMessage& answer) {
  const auto found = questions.find(AnswerNumber(answer));
  if (found == questions.end()) return "";
  std::string key = std::move(found->second);
  questions.erase(found);
  return key;
}

void CReceiptHearer::Work(Time now) {
  if (now < m_due || !m_link.IsUp()) return;
  if (!IsIdle() && now - m_asked < kAnswerPatience) return;
  m_newest.clear();  // without answers: asked again
  m_probes.clear();
  const std::int64_t wall = WallClock();
  m_asked = now;
  while (m_newest.size() < kMostQuestions) {
    const std::vector<CShipFile> overdue = m_state.Overdue(wall, 1);
    if (overdue.empty()) {
      m_due = now + kHearTurn;
      return;
    }
    const CShipFile& file = overdue.front();
    const std::int64_t pause = std::min(2 * file.pause, kLongestPause);
    m_state.Postpone(file, wall + pause, pause);
    m_newest[++m_last] = file.key;
    m_link.Publish(NewestRequest(kReceiptStream, SubjectOf(EFileSubject::done, CarrierOf(file))), "",
                   m_link.AnswerSubject(kNewestKind) + std::to_string(m_last));
  }
}

// What has brought the file, and has the receipt: the file alone or its pack.
CFileSubject CReceiptHearer::CarrierOf(const CShipFile& file) const {
  return {{m_node, file.IsPacked() ? "" : file.key}, file.carrier};
}

void CReceiptHearer::HearNewest(const CNatsMessage& answer) {
  const std::string key = TakeQuestion(m_newest, answer);
  if (answer.Header("Status") == "503")
    m_log.Tell(std::string("receipts cannot be asked for: nothing answers for the stream ") + kReceiptStream +
               " (vastra-fleet init makes it; in another JetStream domain or account it needs --domain)");
  const std::optional<CShipFile> file = m_state.Find(key);
  if (!file || file->state != EShipped::sent) return;
  const std::string subject = SubjectOf(EFileSubject::done, CarrierOf(*file));
  for (const CReceipt& receipt : ParseReceipts(subject, answer.Data())) Hear(receipt);
  if (m_state.Find(key)->state == EShipped::sent) Probe(*file);
}

// Asks for the number of the last chunk in the stream, by a message that cannot be stored. The archive takes
// chunks in their order: if the last one is there, it has not come to them.
void CReceiptHearer::Probe(const CShipFile& file) {
  CFileSubject subject = CarrierOf(file);
  if (!file.IsPacked()) subject.chunk = ChunksOf(file.mark.size) - 1;
  m_probes[++m_last] = file.key;
  m_link.PublishHeader(SubjectOf(EFileSubject::log, subject), "Nats-Expected-Last-Subject-Sequence",
                       "18446744073709551615", m_link.AnswerSubject(kProbeKind) + std::to_string(m_last));
}

void CReceiptHearer::HearProbe(const CNatsMessage& answer) {
  const std::optional<CShipFile> file = m_state.Find(TakeQuestion(m_probes, answer));
  const CStoredAnswer stored = ParseStored(answer);
  if (!file || file->state != EShipped::sent || stored.error != CStoredAnswer::kWrongSequence) return;
  if (stored.text.ends_with(": 0")) m_state.MakeWait(*file);  // else it is there, and waits for the archive
}

}  // namespace vastra
