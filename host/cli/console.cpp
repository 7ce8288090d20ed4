#include "host/cli/console.h"

#include "host/cli/terminal/terminal.h"
#include "vastra/core/link.h"

namespace vastra {

CHostConsole::CHostConsole(EVerbosity verbosity) {
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

int CHostConsole::Write(UINT, const CString& text, COLORREF colour, DWORD) {
  CTerminal::Instance().Lines(text, colour);
  return 1;
}

int CHostConsole::Show(const CString&, const CString&, UINT) { return IDOK; }

}  // namespace vastra
