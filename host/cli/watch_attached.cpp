#include "host/cli/watch_attached.h"

#include <algorithm>

#include "host/attach/feed_poll.h"
#include "host/cli/terminal/keys.h"
#include "host/cli/terminal/terminal.h"
#include "host/run/inbox.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kAttachPause{1};  // between two attempts to connect

class CAttachedWatch {
 public:
  CAttachedWatch(const CLoggerPlace& place, CWatchView& view)
      : m_place(place), m_view(view), m_request({{"sample"}, view.Pause()}) {}

  EExit Run();

 private:
  void Work();
  void Gone();
  void Wait();
  void Note(const CHelloLine& hello);
  void Note(const CStateLine& state);
  void Note(const CSampleLine& sample);
  template <class T>
  void Note(const T&) {}
  void Say(const std::string& words) {
    CTerminal::Instance().Line("vastra: " + m_place.name + ": " + CString(words));
  }

  CLoggerPlace m_place;
  CWatchView& m_view;
  CClientRequest m_request;
  CInbox m_inbox;
  CStopSignals m_stops{m_inbox};
  CKeys m_keys;
  std::optional<CFeedClient> m_client;  // none while the logger is waited for
  Clock::time_point m_retry{};
  bool m_wasThere = false, m_isGone = false;
  std::vector<std::string> m_names;  // of the samples
  std::string m_state = "running";   // that was told last
  EExit m_status = kDone;            // other: the watch ends
};

EExit CAttachedWatch::Run() {
  while (m_status == kDone && !CStopSignals::HaveCome() && !m_view.HasFailed()) {
    const char key = m_keys.Take();
    if (key == 'q' || key == 'Q') break;
    Work();
    if (m_status == kDone) Wait();
  }
  CTerminal::Instance().EndStatus();
  return m_status == kDone ? m_view.End() : m_status;
}

void CAttachedWatch::Work() {
  if (!m_client && Clock::now() >= m_retry) m_client.emplace(m_place.feed, m_request);
  if (!m_client) return;
  m_client->Poll();
  while (m_status == kDone) {
    const std::optional<CFeedEvent> event = m_client->Take();
    if (!event) break;
    std::visit([this](const auto& known) { Note(known); }, *event);
  }
  if (m_status == kDone && m_client->HasEnded()) Gone();
}

// A logger that was never there is an error. One that has gone can come again.
void CAttachedWatch::Gone() {
  if (!m_wasThere) {
    m_status = Fail(kFailed, m_place.name, CString(m_client->Fault()));
  } else if (!m_isGone) {
    Say(m_client->Fault() + "; waiting for it");
    m_isGone = true;
  }
  m_client.reset();
  m_retry = Clock::now() + kAttachPause;
}

void CAttachedWatch::Wait() {
  CFeedClient* const client = m_client ? &*m_client : nullptr;
  const int files[] = {m_inbox.File(), m_keys.File()};
  const Clock::time_point redraw = m_view.Show();
  WaitForFeeds({&client, client ? 1U : 0U}, files, client ? redraw : std::min(redraw, m_retry));
}

void CAttachedWatch::Note(const CHelloLine& hello) {
  if (m_isGone) Say("is there again");
  m_isGone = false;
  m_wasThere = true;
  if (hello.variables.empty() || hello.variables == m_names) return;
  m_names = hello.variables;
  CStringArray names;
  for (const std::string& name : m_names) names.Add(CString(name));
  m_status = m_view.Begin(names);
}

void CAttachedWatch::Note(const CStateLine& state) {
  if (state.state == m_state) return;
  m_state = state.state;
  Say("is " + m_state + (state.reason.empty() ? "" : ": " + state.reason));
}

void CAttachedWatch::Note(const CSampleLine& sample) {
  if (sample.values.size() != m_names.size()) return;
  CLogSample shown;
  shown.m_time = sample.time;
  for (const float value : sample.values) shown.m_values.Add(value);
  m_view.Take(shown, sample.number);
}

}  // namespace

EExit WatchLogger(const CLoggerPlace& place, const CStringArray& variables) {
  CWatchView view(place.name, variables);
  return CAttachedWatch(place, view).Run();
}

}  // namespace vastra
