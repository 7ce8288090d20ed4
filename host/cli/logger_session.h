// CLoggerSession: the session of one configuration, see RunSession: an attempt to run it or, if what is
// missing can come, one attempt after the other. A service has a reload and a notifier besides.
//
//     opening     the stages open
//     running     scans are made
//     waiting     the configuration cannot run yet, and is tried again after 1, 2, 4, ... 30 s
//     stopping    the logs are closed
#pragma once

#include <optional>

#include "host/cli/reload_signal.h"
#include "host/cli/service_notifier.h"
#include "host/cli/session.h"

namespace vastra {

class CLoggerSession {
 public:
  CLoggerSession(const CString& subject, const CConfiguration& configuration, const CSessionOptions& options,
                 CSessionView& view);

  // See RunSession.
  EExit Run(CSessionResult& result);

 private:
  // How an attempt has ended.
  struct CEnd {
    EExit status = kDone;
    CString reason = {};  // why the run could not begin, if that may pass; else empty
  };
  // What the run says of itself.
  class CWitness;

  bool IsService() const { return m_options.load != nullptr; }
  CRunOptions RunOptions();
  CEnd Attempt(CSessionResult& result);
  CEnd NotOpened(const CRun& run, const CString& why);
  CEnd Refuse(const std::vector<CFinding>& findings, bool isFinal);
  void HaveStarted();
  bool WaitAfter(const CString& reason);
  bool WaitUntil(CScanLoop::Time until, const CString& reason);
  void CatchSignals();
  bool Reload(CRun* run);
  bool GoesOnWith(const CConfiguration& fresh, CRun& run, CString& fault);
  bool CanBegin(const CConfiguration& fresh);
  void SetReady();
  void Feed(const std::string& status);

  const CString m_subject;
  CConfiguration m_configuration;
  const CSessionOptions m_options;
  CSessionView& m_view;
  CHostConsole m_console;
  CInbox m_inbox;
  CServiceNotifier m_notifier;
  std::optional<CStopSignals> m_stops;
  std::optional<CReloadSignal> m_reloads;
  std::chrono::seconds m_pause{0};  // before the last attempt
  bool m_isReady = false;
  bool m_isReloading = false;  // a run that ends meanwhile is not the end of the service
};

}  // namespace vastra
