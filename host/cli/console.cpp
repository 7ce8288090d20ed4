#include "host/cli/console.h"

#include "host/cli/terminal/terminal.h"
#include "vastra/core/link.h"

namespace vastra {

CHostConsole::CHostConsole(EVerbosity verbosity, bool isPlain) {
  m_messenger.SpeakToPeople(!isPlain && verbosity != EVerbosity::debug);
  Show(verbosity);
  SetConsoleSink(this);
  SetPrompter(this);
  CLink::SetMessenger(&m_messenger);
}

CHostConsole::~CHostConsole() {
  CLink::SetMessenger(nullptr);
  SetPrompter(nullptr);
  SetConsoleSink(nullptr);
}

void CHostConsole::Show(EVerbosity verbosity) {
  const int words = verbosity != EVerbosity::quiet;
  m_messenger.SetFilters(1, 1, words, words, verbosity == EVerbosity::debug);
}

// A Notice for people is most often good news. The journal shows priorities, not colours.
int CHostConsole::Write(UINT, const CString& text, COLORREF colour, DWORD) {
  const bool isPlain =
      m_messenger.SpeaksToPeople() && colour == kNoticeColour && !CTerminal::Instance().IsJournal();
  CTerminal::Instance().Lines(text, isPlain ? kPlain : colour);
  return 1;
}

int CHostConsole::Show(const CString&, const CString&, UINT) { return IDOK; }

}  // namespace vastra
