// CFeed: lets other programs of the machine follow a logger. It is a Unix stream socket with a line of JSON
// for each event; docs/feed.md describes the lines. Nothing can be changed through it.
//
//   CFeed feed({socket, configuration});
//   if (const CString fault = feed.Open(); !fault.IsEmpty()) show it;
//   CRun run(...); feed.Attach(run); run.Start(); ...   // another one may follow
//
// A thread of the feed's own serves all readers. The thread of the scans only leaves pointers for it: it
// never waits for a reader, writes to no socket and formats nothing. Samples and counts are copied from the
// live state of the run, at the pace of the readers.
#pragma once

#include <memory>

#include "host/run/run_observer.h"

namespace vastra {

class CFeedServer;
class CFeedSource;
class CRun;

enum class EFeedState { opening, running, waiting, stopping, stopped };

struct CFeedPlace {
  CString socket;         // the path of the socket, in a folder that is there
  CString configuration;  // the absolute path of the configuration's file
};

class CFeed : public CRunObserver {
 public:
  explicit CFeed(const CFeedPlace& place);
  // Sends what is new to the readers that can take it at once, and removes the socket.
  ~CFeed() override;
  CFeed(const CFeed&) = delete;
  CFeed& operator=(const CFeed&) = delete;

  // Makes the socket, in place of one that nobody listens on, and starts to serve. Empty, or why that is not
  // possible.
  CString Open();

  // Shows run in place of the one before, which may be destroyed. Called before its start. The state is
  // opening, or stays waiting. Messages and logs stay.
  void Attach(CRun& run);
  // The run that was shown, if there was one, does not open and is tried again: the state is waiting.
  void Wait(const CString& reason);

  void Started(const CStringArray& names) override;
  void Renamed(const CStringArray& names) override;
  void Reloaded() override { Describe(); }
  void Message(const CRunMessage& message) override;
  void LogClosed(const CLogSource& source, const CSavedLog& log) override;
  void LogGrew(const CLogSource& source, const CSavedLog& log) override;
  void LogNotSaved(const CLogSource& source, const CUnsavedLog& log) override;
  void Stopping() override { SetState(EFeedState::stopping); }
  void Stopped() override { SetState(EFeedState::stopped); }

 private:
  void Detach();
  void SetState(EFeedState state, const CString& reason = {});
  void Describe();

  const CFeedPlace m_place;
  const std::unique_ptr<CFeedSource> m_pSource;
  std::unique_ptr<CFeedServer> m_pServer;
  CRun* m_pRun = nullptr;  // that is attached
};

}  // namespace vastra
