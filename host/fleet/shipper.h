// CShipper: sends the logs of a node to the servers, and remembers which of them an archive has.
#pragma once

#include <atomic>

#include "host/fleet/chunk_sender.h"
#include "host/fleet/live_relay.h"
#include "host/fleet/receipt_hearer.h"
#include "host/fleet/ship_files.h"

namespace vastra {

struct CShipperOptions {
  CFleetNode node;
  std::vector<CShipFolder> folders;
  std::string state;              // the folder of its state
  std::uint64_t limit = 0;        // bytes per second; 0: none
  std::int64_t deleteAfter = -1;  // seconds; negative: no file is removed
  bool isCsv = false;
  bool isOnce = false;
  std::string feeds = "/run/vastra";  // the folder with the feeds of the loggers; empty: they are not read
};

class CShipper {
 public:
  using Time = CNatsLink::Time;

  // Throws CStoreFault, CNatsFault and std::system_error.
  CShipper(CNatsLink& link, const CShipperOptions& options, CToldOnce& log);

  // Until end is set and the link was woken; with isOnce until the servers have all files that are there, or
  // have taken nothing for five minutes. Throws CNatsFault for what stays so.
  // Returns whether they have them.
  bool Run(const std::atomic<bool>& end);

 private:
  void Turn(Time now);
  void HearFaults();
  void HearRelay(Time now);
  void Hear(const CNatsMessage& message, Time now);
  void HearRequest(const CFileSubject& asked);
  void Report(Time now);
  bool IsSent() const;
  bool IsDone(Time now);
  bool IsStuck(Time now);
  std::string Summary() const;
  Time NextTurn(Time now) const;

  CNatsLink& m_link;
  CToldOnce& m_log;
  const CFleetNode m_node;
  const bool m_isOnce;
  CShipState m_state;
  CLogFinder m_finder;
  CShipFiles m_files;
  CChunkSender m_sender;
  CReceiptHearer m_receipts;
  Time m_reportDue{}, m_taken = std::chrono::steady_clock::now();
  std::unique_ptr<CLiveRelay> m_relay;  // null: feeds are not read
};

}  // namespace vastra
