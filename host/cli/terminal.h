// CTerminal: what the user sees on standard error. Whole lines, coloured on a terminal, and below them a
// status of one or more lines that is drawn over again. Where standard error is no terminal there is no
// colour and no status; the lines of a command that runs for long then begin with the time. A command whose
// data is the status shows it on standard output instead.
//
// Threads: all operations may be called from any thread; a line is never torn.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "host/cli/exit.h"
#include "vastra/platform/string.h"

namespace vastra {

constexpr COLORREF kPlain = 0x000000, kErrorColour = 0x0000B4, kWarningColour = 0x0082FF;

class CTerminal {
 public:
  // The one of this process.
  static CTerminal& Instance();

  // From here on each line begins with the local time, unless a terminal shows it.
  void StampLines() { m_stamped = !m_isTerminal; }
  // Errors alone: warnings and remarks are dropped.
  void BeQuiet() { m_quiet = true; }

  // One line, without its line end.
  void Line(const CString& text, COLORREF colour = kPlain);
  // A line that --quiet drops.
  void Remark(const CString& text, COLORREF colour = kPlain);
  // Puts text in place of the status, as much of it as fits; an empty one takes the status away.
  void Status(const CString& text);
  void EndStatus() { Status(CString()); }
  bool HasStatus() const;
  // From here on the status goes to standard output; whether that is a terminal that can show it.
  bool PutStatusOnOutput();

 private:
  CTerminal();

  bool m_isTerminal = false;
  int m_statusFile;            // where the status is drawn
  bool m_statusObeys = false;  // it is a terminal that can erase a line
  bool m_coloured = false;
  bool m_stamped = false;
  bool m_quiet = false;
  std::mutex m_mutex;
  std::vector<std::string> m_status;  // the lines that stand there
};

// Tells in one line what is wrong with subject, a file as it was typed or what else the user knows, and gives
// status.
EExit Fail(EExit status, const CString& subject, const CString& words);
// Tells in one line what may not be wanted.
void Warn(const CString& subject, const CString& words);

}  // namespace vastra
