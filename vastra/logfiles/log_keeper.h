// CLogKeeper: keeps the logs of a process by a policy. It has a thread that writes, syncs and rotates logs
// and one that writes the journals. A host makes one keeper, gives it to its output and summary stages before
// Open, and calls Deliver of the stages between its scans:
//
//     CLogKeeper keeper(CLogPolicy{});
//     outputs.SetLogKeeper(&keeper), summaries.SetLogKeeper(&keeper);
//     if (!outputs.Open(names) || !summaries.Open(names)) ... keeper.GetOpenFault() ...
//     keeper.RecoverOthers(nullptr);
//     for each scan: outputs.Write(sample), summaries.Write(sample), outputs.Deliver(), summaries.Deliver();
//     outputs.Close(), summaries.Close();  // wait for the disk
#pragma once

#include <memory>
#include <vector>

#include "vastra/logfiles/log_ledger.h"
#include "vastra/logfiles/log_listener.h"
#include "vastra/logfiles/log_policy.h"

namespace vastra {

class CKeeperState;

// The account of a journal whose output or summary is not open.
struct COtherLedger {
  CString name;  // of the output or summary that wrote the journal
  bool isSummary = false;
  CLogLedger ledger;
};

// A line about logs of journals, with the severity of a message.
struct CKeeperLine {
  char severity;
  CString text;
};

class VASTRA_API CLogKeeper {
 public:
  explicit CLogKeeper(const CLogPolicy& policy);
  ~CLogKeeper();  // after the stages are closed
  CLogKeeper(const CLogKeeper&) = delete;
  CLogKeeper& operator=(const CLogKeeper&) = delete;

  // Makes logs of the journals that ended runs have left in the folders of the open outputs and summaries and
  // that none of these owns. Returns a line for each, such as "recovered 12 samples, ... to ..."; listener,
  // if not null, gets the logs.
  std::vector<CKeeperLine> RecoverOthers(CLogListener* listener);
  // The lines about what has happened to these logs since, for a host that calls Deliver of its stages.
  std::vector<CKeeperLine> DeliverOthers(CLogListener* listener);
  std::vector<COtherLedger> Others() const;

  // Why the last output or summary did not open, such as "logs: process 1234 already writes logs with these
  // names"; empty if the keeper had no objection.
  const CString& GetOpenFault() const;
  void ClearOpenFault();

  // While it is on, the locks of outputs and summaries that close stay with the process, for those that open
  // with the same names next: no other process can take the names meanwhile.
  void HoldLocks(bool isOn);

  // For the file link.
  CKeeperState& State() { return *m_pState; }

 private:
  std::shared_ptr<CKeeperState> m_pState;  // shared with the threads, which can outlast the keeper
};

}  // namespace vastra
