#include "host/fleet/receipt_sender.h"

#include <set>

#include "host/fleet/fleet_streams.h"
#include "host/fleet/nats_faults.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kReceiptOverdue{10}, kReceiptTurn{1};
constexpr std::size_t kMostOverdue = 1000;

}  // namespace

void CReceiptSender::Send(const std::vector<CStoredFile>& files, Time now) {
  std::map<std::string, std::vector<CStoredFile>> receipts;  // by subject
  for (const CStoredFile& one : files) receipts[ReceiptSubject(one)].push_back(one);
  for (auto& [subject, together] : receipts) {
    const std::uint64_t number = ++m_last;
    if (m_link.Publish(subject, MakeReceipt(together, m_record.Id()),
                       m_link.AnswerSubject(kKind) + std::to_string(number)))
      m_sent.emplace(number, CSent{std::move(together), now});
  }
}

std::string CReceiptSender::Hear(const CNatsMessage& answer) {
  const auto found = m_sent.find(AnswerNumber(answer));
  if (found == m_sent.end()) return "";
  const CStoredAnswer stored = ParseStored(answer);
  if (stored.sequence != 0)
    for (CStoredFile& one : found->second.files) m_told.push_back(std::move(one));
  m_sent.erase(found);
  return stored.sequence != 0 ? "" : "receipts: " + FaultWords(stored.text);
}

std::string CReceiptSender::Work(Time now) {
  if (now < m_due) return "";
  m_due = now + kReceiptTurn;
  if (!m_told.empty()) {
    CTransaction transaction(m_record.Store());
    for (const CStoredFile& one : m_told) m_record.Tell(one);
    transaction.Commit();
    m_told.clear();
  }
  const std::size_t silent =
      std::erase_if(m_sent, [&](const auto& one) { return now - one.second.sent > kReceiptOverdue; });
  if (!m_link.IsUp()) return "";
  if (now >= m_againDue) {
    m_againDue = now + kReceiptOverdue;
    Send(Overdue(), now);
  }
  return silent == 0
             ? ""
             : std::string("receipts: the stream ") + kReceiptStream +
                   " has not answered, they are sent again (vastra-fleet init makes it if it is not there)";
}

std::vector<CStoredFile> CReceiptSender::Overdue() {
  std::set<std::string> onWay;
  for (const auto& [number, sent] : m_sent)
    for (const CStoredFile& one : sent.files) onWay.insert(one.path);
  std::vector<CStoredFile> overdue = m_record.Untold(kMostOverdue + onWay.size());
  std::erase_if(overdue, [&](const CStoredFile& one) { return onWay.contains(one.path); });
  return overdue;
}

std::string ReceiptSubject(const CStoredFile& stored) {
  if (stored.pack == CVersion{}) return SubjectOf(EFileSubject::done, {stored.file, stored.version});
  return SubjectOf(EFileSubject::done, {{stored.file.node, ""}, stored.pack});
}

// The subject stands in it: a receipt is worth nothing under another one.
std::string MakeReceipt(const std::vector<CStoredFile>& files, const std::string& archive) {
  const CStoredFile& first = files.front();
  CJson receipt = {{"receipt", ReceiptSubject(first)}, {"archive", archive}};
  if (first.pack == CVersion{}) {
    receipt["bytes"] = first.size;
    receipt["sequence"] = first.order.sequence;
    return JsonText(receipt);
  }
  for (const CStoredFile& one : files)
    receipt["files"].push_back(
        {{"file", Token(one.file.key)}, {"version", HexOf(one.version)}, {"sequence", one.order.sequence}});
  return JsonText(receipt);
}

namespace {

std::vector<CReceipt> ParsePackReceipt(const nlohmann::json& json, const CReceipt& whole) {
  std::vector<CReceipt> receipts;
  for (const nlohmann::json& entry : json.at("files")) {
    const std::optional<std::string> key = TextOfToken(entry.value("file", std::string()));
    const std::optional<CVersion> version = VersionOfHex(entry.value("version", std::string()));
    if (key && version)
      receipts.push_back({{{whole.subject.file.node, *key}, *version},
                          entry.value("sequence", std::uint64_t{0}),
                          whole.archive});
  }
  return receipts;
}

}  // namespace

std::vector<CReceipt> ParseReceipts(std::string_view subject, std::string_view data) {
  const std::optional<CFileSubject> parts = ParseFileSubject(EFileSubject::done, subject);
  if (!parts) return {};
  try {
    const nlohmann::json json = ParseJson(data);
    const CReceipt receipt = {*parts, json.value("sequence", std::uint64_t{0}),
                              json.value("archive", std::string())};
    if (json.value("receipt", std::string()) != subject || receipt.archive.empty()) return {};
    return parts->IsPack() ? ParsePackReceipt(json, receipt) : std::vector<CReceipt>{receipt};
  } catch (const CJsonFault&) {
    return {};
  } catch (const nlohmann::json::exception&) {
    return {};
  }
}

}  // namespace vastra
