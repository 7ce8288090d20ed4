// CHostConsole: the messenger of this host. It prints the messages of the links to standard error. It answers
// the message box of a Fatal message with OK, since the message has been printed already.
#pragma once

#include "host/run/run_messenger.h"
#include "vastra/core/console_sink.h"
#include "vastra/platform/prompt.h"

namespace vastra {

// Which messages of the links are shown.
enum class EVerbosity { normal, debug, quiet };

class CHostConsole : private CConsoleSink, private CPrompter {
 public:
  // Installs itself. Only one can exist at a time, and it must outlive all links.
  // isPlain: the lines are those of the engine; with EVerbosity::debug they are, too.
  explicit CHostConsole(EVerbosity verbosity, bool isPlain = false);
  CHostConsole(const CHostConsole&) = delete;
  CHostConsole& operator=(const CHostConsole&) = delete;
  ~CHostConsole() override;

  CRunMessenger& Messenger() { return m_messenger; }

  void Show(EVerbosity verbosity);
  // No messages at all, until the next Show.
  void ShowNothing() { m_messenger.SetFilters(0, 0, 0, 0, 0); }

 private:
  int Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) override;
  int Show(const CString& text, const CString& title, UINT type) override;

  CRunMessenger m_messenger;
};

}  // namespace vastra
