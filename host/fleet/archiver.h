// CArchiver: takes the chunks of a fleet from the servers into an archive, and publishes the receipts.
#pragma once

#include <atomic>
#include <map>

#include "host/fleet/archive_intake.h"
#include "host/fleet/nats_link.h"
#include "host/fleet/receipt_sender.h"
#include "host/fleet/told_once.h"

namespace vastra {

struct CArchiverOptions {
  std::string into;   // the folder of the archive
  std::string state;  // the folder of its record
  std::string site;   // takes the files of this site alone; empty: of all
};

class CArchiver {
 public:
  using Time = CNatsLink::Time;

  // Throws std::system_error and CStoreFault.
  CArchiver(CNatsLink& link, const CArchiverOptions& options, CToldOnce& log);

  // Until end is set and the link was woken.
  void Run(const std::atomic<bool>& end);

 private:
  struct CAsked {
    CFileSubject subject;
    Time due;
    std::chrono::seconds pause;
  };

  void SetUp(Time now);
  void Pull(Time now);
  void Hear(CNatsMessage message);
  void HearPull(const CNatsMessage& status);
  void TakeBatch(Time now);
  void TakeOne(const CNatsMessage& message, Time now);
  void AskAgain(Time now);
  void Keep(Time now);
  void AskLater(const CFileSubject& subject, Time now);

  CNatsLink& m_link;
  CToldOnce& m_log;
  const std::string m_site;
  CArchiveTree m_tree;
  CArchiveRecord m_record;
  CArchiveIntake m_intake;
  CReceiptSender m_receipts;

  // Of the consumer.
  unsigned m_connection = 0;  // for which it was set up
  bool m_isReady = false;
  std::uint64_t m_stream = 0;  // its number
  Time m_setUpDue{};

  // Of the request for messages that is with the server.
  std::size_t m_wanted = 0;
  Time m_pullEnd{};
  std::deque<CNatsMessage> m_batch;

  std::map<std::string, CAsked> m_asked;  // by subject
  Time m_askDue{}, m_staleDue{};
};

}  // namespace vastra
