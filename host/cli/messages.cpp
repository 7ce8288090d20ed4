// vastra messages: the messages of a running logger.
#include <unistd.h>

#include <cerrno>

#include "host/attach/feed_poll.h"
#include "host/cli/command.h"
#include "host/cli/logger_arguments.h"
#include "host/cli/terminal/line_queue.h"
#include "host/cli/terminal/terminal.h"
#include "host/cli/time_text.h"
#include "host/common/shown_text.h"
#include "host/run/inbox.h"
#include "vastra/platform/file.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

// Without --follow, for the messages that the logger keeps, which are 500.
constexpr std::chrono::seconds kMessagesTime{5};
constexpr int kMostMessages = 1000;

class CMessagePrinter {
 public:
  explicit CMessagePrinter(const CLoggerPlace& place)
      : m_name(place.name), m_reader(place.feed, {{"message"}}), m_lines(STDOUT_FILENO) {}

  EExit PrintKept();
  EExit Follow();

 private:
  void Take();  // what has come
  void Note(const CMessageLine& message);
  void Note(const CDroppedLine& dropped);
  void Note(const CKeptLine&) { m_hasKept = true; }
  template <class T>
  void Note(const T&) {}
  EExit Gone();
  EExit Late();
  EExit End();

  CString m_name;
  CFeedClient m_reader;
  CLineQueue m_lines;
  int m_count = 0;
  bool m_hasKept = false;  // all that the logger had kept
};

void CMessagePrinter::Take() {
  m_reader.Poll();
  while (std::optional<CFeedEvent> event = m_reader.Take())
    std::visit([this](const auto& known) { Note(known); }, *event);
}

void CMessagePrinter::Note(const CMessageLine& message) {
  ++m_count;
  if (AddsNothing(message.Message())) return;
  m_lines.Add(LocalTimeText(message.time.time) + " " +
              Printable(Shortened(MessageText(message.Message()).c_str())));
}

void CMessagePrinter::Note(const CDroppedLine& dropped) {
  if (dropped.messages) m_lines.Add(Counted(dropped.messages, "message") + " dropped");
}

EExit CMessagePrinter::Gone() {
  m_lines.Drain();
  return Fail(kFailed, m_name, CString(m_reader.Fault()));
}

EExit CMessagePrinter::Late() {
  m_lines.Drain();
  return Fail(kFailed, m_name, "the logger has not marked the end of the messages that it keeps");
}

// A reader that has closed the pipe needs no message.
EExit CMessagePrinter::End() {
  m_lines.Drain();
  const int fault = m_lines.Fault();
  if (fault == 0) return kDone;
  return fault == EPIPE ? kFailed : Fail(kFailed, "standard output", CFileException("", fault).Text());
}

EExit CMessagePrinter::PrintKept() {
  const Clock::time_point until = Clock::now() + kMessagesTime;
  CFeedClient* const reader = &m_reader;
  for (Take(); !m_hasKept; Take()) {
    if (m_reader.HasEnded()) return Gone();
    if (Clock::now() >= until || m_count >= kMostMessages) return Late();
    WaitForFeeds({&reader, 1}, {}, until);
  }
  return End();
}

EExit CMessagePrinter::Follow() {
  CInbox inbox;
  const CStopSignals stops(inbox);
  const int stop = inbox.File();
  CFeedClient* const reader = &m_reader;
  while (!CStopSignals::HaveCome() && m_lines.Fault() == 0) {
    Take();
    if (m_reader.HasEnded()) return Gone();
    WaitForFeeds({&reader, 1}, {&stop, 1}, Clock::time_point::max());
  }
  return End();
}

}  // namespace

CAction DeclareMessages(CArguments& arguments) {
  const auto name = arguments.Text("NAME", "The logger");
  const auto follow = arguments.Flag("--follow", "Go on with the new messages, until a signal");
  const CLoggerArguments loggers(arguments);
  return [=] {
    if (CLoggerArguments::Check(*name) != kDone) return kWrongUse;
    CMessagePrinter printer(PlaceOfLogger(loggers.Folders(), *name));
    return *follow ? printer.Follow() : printer.PrintKept();
  };
}

}  // namespace vastra
