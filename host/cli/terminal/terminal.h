// CTerminal: what the user sees on standard error. Whole lines, coloured on a terminal, and below them a
// status of one or more lines that is redrawn in place. Where standard error is not a terminal there is no
// colour and no status; the lines of a command that runs for long then begin with the time. watch draws its
// status on standard output instead. In a service whose standard error is the journal, lines begin with their
// priority, as the journal expects it: it adds the time itself.
//
// Control characters in a line or in the status are shown as "?", in a pipe or a file too: a message is one
// line, except where a link has line feeds in its text.
//
// Nobody waits for the reader: a queue with a thread of its own writes, see CLineQueue.
//
// Threads: all operations may be called from any thread; lines are never mixed.
#pragma once

#include <string>
#include <vector>

#include "host/cli/exit.h"
#include "host/cli/terminal/line_queue.h"
#include "host/cli/terminal/told_lines.h"
#include "vastra/core/messenger.h"
#include "vastra/platform/string.h"

namespace vastra {

constexpr COLORREF kPlain = 0x000000;

class CTerminal {
 public:
  // The only one of this process.
  static CTerminal& Instance();

  // From now on each line begins with the local time if standard error is not a terminal.
  void StampLines() { m_stamped = !m_isTerminal; }
  // From now on each line begins with its priority, "<3>" for an error, if standard error is the stream that
  // the environment variable JOURNAL_STREAM names.
  void FollowJournal();
  bool IsJournal() const { return m_isJournal; }
  // From now on Remark prints nothing, and there is no status on standard error.
  void BeQuiet() { m_quiet = true; }

  // Prints one line; text has no line end.
  void Line(const CString& text, COLORREF colour = kPlain);
  // The same for the message of a link, which can have line feeds of its own.
  void Lines(const CString& text, COLORREF colour);
  // Prints a line that --quiet drops.
  void Remark(const CString& text, COLORREF colour = kPlain);
  // Replaces the status with as many of lines as fit; without lines it removes the status.
  void Status(const std::vector<std::string>& lines);
  void EndStatus() { Status({}); }
  bool HasStatus() const;
  // From now on the status goes to standard output. Returns whether that is a terminal that can show it.
  bool PutStatusOnOutput();
  // Waits until all is written, for a bounded time, so that what another stream shows next comes after it.
  void Drain();
  // Of a command that tries again and again.
  CToldLines& Told() { return m_told; }

 private:
  CTerminal();

  bool m_isTerminal = false;
  int m_statusFile;         // where the status is drawn
  bool m_canErase = false;  // m_statusFile is a terminal that can erase a line
  bool m_coloured = false;
  bool m_stamped = false;
  bool m_isJournal = false;
  bool m_quiet = false;
  CToldLines m_told;
  CLineQueue m_lines;   // of standard error, and of the status if that is on the same terminal
  CLineQueue m_output;  // of a status on standard output while standard error is not a terminal
};

// Prints the error message "vastra: SUBJECT: WORDS" and returns status. subject is a file as it was typed, or
// a command.
EExit Fail(EExit status, const CString& subject, const CString& words);
// Prints the line of text that has the place of an error, and below it a caret under that place. offset:
// bytes from the start of text.
void PrintPlace(const CString& text, int offset);
// Prints a warning in the same form; --quiet drops it.
void Warn(const CString& subject, const CString& words);

}  // namespace vastra
