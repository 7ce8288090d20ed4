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

// Without --follow: the messages that the logger keeps come without a pause between them, and it keeps 500.
constexpr std::chrono::milliseconds kMessagesQuiet{500};
constexpr std::chrono::seconds kMessagesTime{5};
constexpr int kMostMessages = 1000;

class CMessagePrinter {
 public:
  explicit CMessagePrinter(const CLoggerPlace& place)
      : m_name(place.name), m_reader(place.feed, {{"message"}}), m_lines(STDOUT_FILENO) {}

  EExit PrintKept();
  EExit Follow();

 private:
  // Takes what has come. Returns whether something has.
  bool Take();
  void Note(const CMessageLine& message);
  void Note(const CDroppedLine& dropped);
  template <class T>
  void Note(const T&) {}
  EExit Gone();
  EExit End();

  CString m_name;
  CFeedClient m_reader;
  CLineQueue m_lines;
  int m_count = 0;
};

bool CMessagePrinter::Take() {
  bool hasCome = false;
  m_reader.Poll();
  while (std::optional<CFeedEvent> event = m_reader.Take()) {
    hasCome = true;
    std::visit([this](const auto& known) { Note(known); }, *event);
  }
  return hasCome;
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

// A reader that has closed the pipe needs no message.
EExit CMessagePrinter::End() {
  m_lines.Drain();
  const int fault = m_lines.Fault();
  if (fault == 0) return kDone;
  return fault == EPIPE ? kFailed : Fail(kFailed, "standard output", CFileException("", fault).Text());
}

EExit CMessagePrinter::PrintKept() {
  const Clock::time_point end = Clock::now() + kMessagesTime;
  Clock::time_point until = Clock::now() + CFeedClient::kGreeting;
  CFeedClient* const reader = &m_reader;
  while (Clock::now() < until && m_count < kMostMessages) {
    if (Take()) until = std::min(end, Clock::now() + kMessagesQuiet);
    if (m_reader.HasEnded()) return Gone();
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
