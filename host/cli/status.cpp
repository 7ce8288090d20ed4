// vastra status: asks the loggers of this machine how they are.
#include <algorithm>
#include <cerrno>

#include "host/attach/feed_poll.h"
#include "host/attach/status_metrics.h"
#include "host/cli/command.h"
#include "host/cli/logger_arguments.h"
#include "host/cli/output.h"
#include "host/cli/status_views.h"
#include "host/cli/terminal/terminal.h"
#include "host/run/inbox.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLookPause{1};  // with --follow

struct CStatusArguments {
  explicit CStatusArguments(CArguments& arguments);

  CArgument<std::vector<CString>> names;
  CLoggerArguments loggers;
  CArgument<bool> asJson, asMetrics, follow;
};

CStatusArguments::CStatusArguments(CArguments& arguments)
    : names(arguments.OptionalTexts("NAME", "These loggers only")),
      loggers(arguments),
      asJson(arguments.Flag("--json", "Print one array of objects")),
      asMetrics(arguments.Flag("--prometheus", "Print metrics in the text format of Prometheus")),
      follow(arguments.Flag("--follow", "Ask again each second, until a signal")) {
  arguments.Exclude("--json", "--prometheus");
  arguments.Exclude("--follow", "--prometheus");
}

// The loggers at one moment, and what the command makes of it.
class CStatusLook {
 public:
  // stop: a file that ends the look when it can be read.
  CStatusLook(const CStatusArguments& arguments, int stop);

  EExit Status() const { return m_isWell ? kDone : kFailed; }
  // A warning of the search, or that there is no logger; empty: none.
  const CString& Warning() const { return m_warning; }
  std::vector<std::string> Table() const { return StatusTable(m_loggers); }
  EExit Print(const CStatusArguments& arguments) const;

 private:
  std::vector<CLoggerStatus> m_loggers;
  CString m_warning;
  bool m_isWell;
};

CStatusLook::CStatusLook(const CStatusArguments& arguments, int stop) {
  const CLoggerFolders folders = arguments.loggers.Folders();
  std::vector<CLoggerPlace> places;
  for (const CString& name : *arguments.names) places.push_back(PlaceOfLogger(folders, name));
  if (places.empty()) places = FindLoggers(folders, m_warning);
  if (places.empty() && m_warning.IsEmpty()) m_warning = "there is no logger in " + folders.run;
  m_loggers = AskLoggers(places, stop);
  m_isWell = m_warning.IsEmpty() && std::all_of(m_loggers.begin(), m_loggers.end(),
                                                [](const CLoggerStatus& logger) { return logger.IsWell(); });
}

EExit CStatusLook::Print(const CStatusArguments& arguments) const {
  if (!m_warning.IsEmpty()) Fail(kFailed, "status", m_warning);
  if (*arguments.asJson) return PrintJson(StatusJson(m_loggers));
  if (*arguments.asMetrics) return PrintData(StatusMetrics(m_loggers));
  return m_loggers.empty() ? kDone : PrintLines(Table());
}

// Waits until the time or a signal.
void PauseUntil(Clock::time_point until, int stop) {
  while (Clock::now() < until && !CStopSignals::HaveCome())
    if (WaitForFeeds({}, {&stop, 1}, until)) return;
}

// On a terminal the table is redrawn in place, elsewhere everything is printed again and again.
EExit FollowStatus(const CStatusArguments& arguments) {
  CInbox inbox;
  const CStopSignals stops(inbox);
  const bool isDrawn = !*arguments.asJson && CTerminal::Instance().PutStatusOnOutput();
  EExit status = kDone;
  for (Clock::time_point next = Clock::now(); !CStopSignals::HaveCome(); PauseUntil(next, inbox.File())) {
    next = std::max(next + kLookPause, Clock::now());
    const CStatusLook look(arguments, inbox.File());
    if (CStopSignals::HaveCome()) break;  // it is cut short
    status = look.Status();
    std::vector<std::string> lines = look.Table();
    if (!look.Warning().IsEmpty()) lines.push_back(look.Warning().Std());
    if (isDrawn)
      CTerminal::Instance().Status(lines);
    else if (look.Print(arguments) != kDone)
      return kFailed;
  }
  CTerminal::Instance().EndStatus();
  return status;
}

EExit Status(const CStatusArguments& arguments) {
  for (const CString& name : *arguments.names)
    if (CLoggerArguments::Check(name) != kDone) return kWrongUse;
  if (*arguments.follow) return FollowStatus(arguments);
  const CStatusLook look(arguments, -1);
  return look.Print(arguments) == kDone ? look.Status() : kFailed;
}

}  // namespace

CAction DeclareStatus(CArguments& arguments) {
  const CStatusArguments status(arguments);
  return [=] { return Status(status); };
}

}  // namespace vastra
