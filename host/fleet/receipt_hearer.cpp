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
  std::vector<CShipFile> overdue = m_state.Overdue(wall, kMostQuestions);
  if (overdue.size() < kMostQuestions) m_due = now + kHearTurn;
  for (CShipFile& file : overdue) {
    file.pause = std::min(2 * file.pause, kLongestPause);
    file.due = wall + file.pause;
    m_state.Put(file);
    m_newest[++m_last] = file.key;
    m_link.Publish(
        NewestRequest(kReceiptStream, SubjectOf(EFileSubject::done, {{m_node, file.key}, file.version})), "",
        m_link.AnswerSubject(kNewestKind) + std::to_string(m_last));
  }
}

void CReceiptHearer::HearNewest(const CNatsMessage& answer) {
  const std::string key = TakeQuestion(m_newest, answer);
  const std::optional<CShipFile> file = m_state.Find(key);
  if (!file || file->state != EShipped::sent) return;
  const std::string subject = SubjectOf(EFileSubject::done, {{m_node, file->key}, file->version});
  if (const std::optional<CReceipt> receipt = ParseReceipt(subject, answer.Data())) Hear(*receipt);
  if (m_state.Find(key)->state == EShipped::sent) Probe(*file);
}

// Asks for the number of the last chunk in the stream, by a message that cannot be stored. The archive takes
// chunks in their order: if the last one is there, it has not come to them.
void CReceiptHearer::Probe(const CShipFile& file) {
  const bool isPacked = file.carrier != file.version;
  CFileSubject subject = {{m_node, isPacked ? "" : file.key}, file.carrier};
  if (!isPacked) subject.chunk = ChunksOf(file.mark.size) - 1;
  m_probes[++m_last] = file.key;
  m_link.PublishHeader(SubjectOf(EFileSubject::log, subject), "Nats-Expected-Last-Subject-Sequence",
                       "18446744073709551615", m_link.AnswerSubject(kProbeKind) + std::to_string(m_last));
}

void CReceiptHearer::HearProbe(const CNatsMessage& answer) {
  std::optional<CShipFile> file = m_state.Find(TakeQuestion(m_probes, answer));
  const CStoredAnswer stored = ParseStored(answer);
  if (!file || file->state != EShipped::sent || stored.error != CStoredAnswer::kWrongSequence) return;
  if (!stored.text.ends_with(": 0")) return;  // it is there, and waits for the archive
  file->state = EShipped::waiting;
  file->due = 0;
  m_state.Put(*file);
}

}  // namespace vastra
