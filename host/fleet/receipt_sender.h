// CReceiptSender: publishes the receipts of an archive, and again until the servers have them. The files of a
// pack have one receipt together: a server takes some hundred bytes of memory for each.
#pragma once

#include <map>

#include "host/fleet/archive_record.h"
#include "host/fleet/nats_link.h"

namespace vastra {

class CReceiptSender {
 public:
  using Time = CNatsLink::Time;

  CReceiptSender(CNatsLink& link, CArchiveRecord& record) : m_link(link), m_record(record) {}

  void Send(const std::vector<CStoredFile>& files, Time now);
  // An answer whose subject is AnswerSubject(kKind) and a number. Returns what is wrong, or nothing.
  std::string Hear(const CNatsMessage& answer);
  // Sends again what is overdue, and notes what has arrived. Returns what is wrong, or nothing. Throws
  // CStoreFault.
  std::string Work(Time now);

  static constexpr const char* kKind = "receipt";

 private:
  struct CSent {
    std::vector<CStoredFile> files;
    Time sent;
  };

  // Files without a receipt, and none on its way.
  std::vector<CStoredFile> Overdue();

  CNatsLink& m_link;
  CArchiveRecord& m_record;
  std::map<std::uint64_t, CSent> m_sent;  // without an answer, by number
  std::uint64_t m_last = 0;
  std::vector<CStoredFile> m_told;
  Time m_due{}, m_againDue{};
};

// What a receipt says beside its subject.
struct CReceipt {
  CFileSubject subject;
  std::uint64_t sequence = 0;  // of the last message that brought something of the file
  std::string archive;         // the id of its record
};
// The receipt, and its subject, of a file that came alone, or of the files of one pack.
std::string ReceiptSubject(const CStoredFile& stored);
std::string MakeReceipt(const std::vector<CStoredFile>& files, const std::string& archive);
// Empty for what is not the receipt of this subject.
std::vector<CReceipt> ParseReceipts(std::string_view subject, std::string_view data);

}  // namespace vastra
