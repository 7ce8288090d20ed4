// CReloadSignal: while the object exists SIGHUP asks for a reload of the configuration: it posts
// messageReload to inbox.
#pragma once

#include "host/run/inbox.h"

namespace vastra {

class CReloadSignal {
 public:
  static constexpr UINT messageReload = kHostMessages;

  // After the CStopSignals of inbox, for which SIGHUP is a stop.
  explicit CReloadSignal(CInbox& inbox);
  CReloadSignal(const CReloadSignal&) = delete;
  CReloadSignal& operator=(const CReloadSignal&) = delete;
  ~CReloadSignal();  // from now on SIGHUP has no effect: the process is about to end

  // Called when a reload begins: a signal from then on asks for another one.
  static void Begin();
};

}  // namespace vastra
