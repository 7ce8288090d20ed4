// CMessages: the messages of all links, in console window 0, and what the user has said about them.
#pragma once

#include "host/desktop/settings.h"
#include "vastra/core/messenger.h"

namespace vastra {

class CMessages {
 public:
  explicit CMessages(CSettings& settings);  // makes the window, hidden
  ~CMessages();                             // takes it away; its place is remembered
  CMessages(const CMessages&) = delete;
  CMessages& operator=(const CMessages&) = delete;

  void Show();
  // Asks which kinds to show, whether the window stays on top and whether to clear it.
  void Configure();
  // A line of the host's own, as a warning.
  void Warn(const CString& text);

  // As long as it lives no message is shown: what fails now fails again, and is told, when the stages open.
  class CQuiet {
   public:
    explicit CQuiet(CMessages& messages) : m_messages(messages) {
      m_messages.m_messenger.SetFilters(0, 0, 0, 0, 0);
    }
    ~CQuiet() { m_messages.Apply(); }
    CQuiet(const CQuiet&) = delete;
    CQuiet& operator=(const CQuiet&) = delete;

   private:
    CMessages& m_messages;
  };

 private:
  void Restore();
  void Remember();
  void Apply();

  CSettings& m_settings;
  CMessenger m_messenger;
  int m_all = 0;
  int m_kinds[5] = {1, 1, 1, 1, 0};  // fatal, error, warning, notice, debug
  int m_onTop = 0;
};

}  // namespace vastra
