// CMessages: the messages of all links and of the desktop, in console window 0, and their settings; and the
// message log, which has them for people and keeps them.
#pragma once

#include <memory>

#include "host/desktop/message_window.h"
#include "host/desktop/settings.h"
#include "host/run/run_messenger.h"

namespace vastra {

class CMessages {
 public:
  explicit CMessages(CSettings& settings);  // creates the hidden window
  ~CMessages();                             // destroys the window and saves its place
  CMessages(const CMessages&) = delete;
  CMessages& operator=(const CMessages&) = delete;

  void Show();
  void Hide();
  bool IsShown() const;
  // Asks which kinds to show, whether the window stays on top and whether to clear it.
  void Configure();
  // Shows a warning of the host. part: of the configuration, empty if text names it or there is none.
  void Warn(const CString& text, const CString& part = {});
  // Shows an event that is not a failure.
  void Tell(const CString& text);

  // The message log: the window, brought to the front; the lines.
  void ShowLog(const CMessageWindow::COpenPlace& openPlace);
  CMessageWindow* LogWindow() const { return m_pLogWindow.get(); }  // null: not opened yet
  CMessageModel& Log() { return m_log; }
  // Adds to the log a message of a run, from any thread; a fault that the user sees in a box.
  void Keep(const CRunMessage& message);
  void KeepFault(const CString& text, const CString& part) {
    m_log.AddMessage(DesktopLine(severityError, text.View(), part.View()));
  }

  // The lines are those of the engine, as with all messages on, or written for people.
  void SetPlain(bool isPlain);

  CRunMessenger& Messenger() { return m_messenger; }

 private:
  void Restore();
  void Remember();
  void Apply();

  CSettings& m_settings;
  CMessageModel m_log;
  std::unique_ptr<CMessageWindow> m_pLogWindow;  // null: not opened yet
  CRunMessenger m_messenger;
  int m_all = 0;
  int m_kinds[5] = {1, 1, 1, 1, 0};  // fatal, error, warning, notice, debug
  int m_onTop = 0;
  bool m_isPlain = false;
};

}  // namespace vastra
