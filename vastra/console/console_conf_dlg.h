// CConsoleConfDlg: asks which kinds of messages a console shows, whether it stays on top, and whether to
// clear it. The host sets the check values, runs the dialog, and after IDOK applies them: the kinds by
// CMessenger::SetFilters, the rest by CConsole.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

class VASTRA_API CConsoleConfDlg : public CDialog {
 public:
  explicit CConsoleConfDlg(CWnd* parent = nullptr);

  // 0: the user cannot change "Always on Top".
  void EnableOnTop(int enabled) { m_onTopEnabled = enabled; }

  int m_all = 0;  // all kinds; then the five kinds are 0
  int m_onTop = 0;
  int m_error = 0;
  int m_fatal = 0;
  int m_notice = 0;
  int m_warning = 0;
  int m_debug = 0;
  int m_clear = 0;

 protected:
  void OnInitDialog() override;
  void OnOK() override;

 private:
  struct CBox {
    const char* caption;
    int CConsoleConfDlg::*value;
  };
  static const CBox kBoxes[8];

  void OnAllCheck();
  void OnFatalCheck() { OnKindCheck(); }
  void OnErrorCheck() { OnKindCheck(); }
  void OnWarningCheck() { OnKindCheck(); }
  void OnNotesCheck() { OnKindCheck(); }
  void OnDebugCheck() { OnKindCheck(); }
  void OnKindCheck();

  int m_onTopEnabled = 1;
};

}  // namespace vastra
