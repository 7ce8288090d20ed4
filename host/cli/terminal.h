// CTerminal: what the user sees on standard error. Whole lines, coloured on a terminal, and below them one
// status line that is drawn over again. Where standard error is no terminal there is no colour and no status
// line; the lines of a command that runs for long then begin with the time.
//
// Threads: all operations may be called from any thread; a line is never torn.
#pragma once

#include <mutex>

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
  // Puts text in place of the status line, as much of it as fits.
  void Status(const CString& text);
  void EndStatus() { Status(CString()); }
  bool HasStatusLine() const { return m_obeysCodes && !m_quiet; }

 private:
  CTerminal();

  bool m_isTerminal = false;
  bool m_obeysCodes = false;  // a terminal that can erase a line
  bool m_coloured = false;
  bool m_stamped = false;
  bool m_quiet = false;
  std::mutex m_mutex;
  CString m_status;  // what stands in the status line
};

// Tells in one line what is wrong with subject, a file as it was typed or what else the user knows, and gives
// status.
EExit Fail(EExit status, const CString& subject, const CString& words);
// Tells in one line what may not be wanted.
void Warn(const CString& subject, const CString& words);

}  // namespace vastra
