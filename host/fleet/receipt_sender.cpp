#include "host/fleet/receipt_sender.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kReceiptOverdue{10}, kReceiptTurn{1};
constexpr std::size_t kMostOverdue = 1000;

std::string ReceiptSubject(const CStoredFile& stored) {
  return SubjectOf(EFileSubject::done, {stored.file, stored.version});
}

}  // namespace

void CReceiptSender::Send(const CStoredFile& stored, Time now) {
  const std::uint64_t number = ++m_last;
  if (m_link.Publish(ReceiptSubject(stored), MakeReceipt(stored, m_record.Id()),
                     m_link.AnswerSubject(kKind) + std::to_string(number)))
    m_sent.emplace(number, CSent{stored, now});
}

std::string CReceiptSender::Hear(const CNatsMessage& answer) {
  const auto found = m_sent.find(AnswerNumber(answer));
  if (found == m_sent.end()) return "";
  const CStoredAnswer stored = ParseStored(answer);
  if (stored.sequence != 0) m_told.push_back(std::move(found->second.stored));
  m_sent.erase(found);
  return stored.sequence != 0 ? "" : "receipts: " + stored.text;
}

void CReceiptSender::Work(Time now) {
  if (now < m_due) return;
  m_due = now + kReceiptTurn;
  if (!m_told.empty()) {
    CTransaction transaction(m_record.Store());
    for (const CStoredFile& one : m_told) m_record.Tell(one);
    transaction.Commit();
    m_told.clear();
  }
  std::erase_if(m_sent, [&](const auto& one) { return now - one.second.sent > kReceiptOverdue; });
  if (now < m_againDue || !m_link.IsUp()) return;
  m_againDue = now + kReceiptOverdue;
  for (const CStoredFile& one : m_record.Untold(kMostOverdue)) Send(one, now);
}

// The subject stands in it: a receipt is worth nothing under another one.
std::string MakeReceipt(const CStoredFile& stored, const std::string& archive) {
  return JsonText({{"receipt", ReceiptSubject(stored)},
                   {"bytes", stored.size},
                   {"sequence", stored.order.sequence},
                   {"archive", archive}});
}

std::optional<CReceipt> ParseReceipt(std::string_view subject, std::string_view data) {
  const std::optional<CFileSubject> parts = ParseFileSubject(EFileSubject::done, subject);
  if (!parts || parts->IsPack()) return std::nullopt;
  try {
    const nlohmann::json json = ParseJson(data);
    CReceipt receipt = {*parts, json.value("sequence", std::uint64_t{0}),
                        json.value("archive", std::string())};
    if (json.value("receipt", std::string()) != subject || receipt.archive.empty()) return std::nullopt;
    return receipt;
  } catch (const CJsonFault&) {
    return std::nullopt;
  } catch (const nlohmann::json::exception&) {
    return std::nullopt;
  }
}

}  // namespace vastra
