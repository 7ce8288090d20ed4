// CHostConsole: the messenger of this host and what it needs around it. The lines of the links go to standard
// error; the box of a Fatal line is answered OK, since its line has been printed already.
#pragma once

#include "vastra/core/console_sink.h"
#include "vastra/core/messenger.h"
#include "vastra/platform/prompt.h"

namespace vastra {

// Which lines of the links are shown.
enum class EVerbosity { normal, debug, quiet };

class CHostConsole : private CConsoleSink, private CPrompter {
 public:
  // Installs itself; there is one at a time, and no link outlives it.
  explicit CHostConsole(EVerbosity verbosity);
  CHostConsole(const CHostConsole&) = delete;
  CHostConsole& operator=(const CHostConsole&) = delete;
  ~CHostConsole() override;

  void Show(EVerbosity verbosity);
  // No line at all, until the next Show.
  void ShowNothing() { m_messenger.SetFilters(0, 0, 0, 0, 0); }

 private:
  int Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) override;
  int Show(const CString& text, const CString& title, UINT type) override;

  CMessenger m_messenger;
};

}  // namespace vastra
