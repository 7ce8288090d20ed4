// Modal message boxes. A host with windows installs a prompter; without one the text goes to standard error
// and the answer is OK.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// Buttons and icon of a box, joined by "|", and its answers.
constexpr UINT MB_OK = 0x00, MB_OKCANCEL = 0x01, MB_YESNOCANCEL = 0x03, MB_YESNO = 0x04;
constexpr UINT MB_ICONSTOP = 0x10, MB_ICONQUESTION = 0x20, MB_ICONEXCLAMATION = 0x30;
constexpr UINT MB_DEFBUTTON2 = 0x100;  // Return presses the second button
constexpr int IDOK = 1, IDCANCEL = 2, IDYES = 6, IDNO = 7;

class VASTRA_API CPrompter {
 public:
  virtual ~CPrompter() = default;
  // Shows a box and returns the user's answer. With an empty title it shows the program's name. Called from
  // any thread.
  virtual int Show(const CString& text, const CString& title, UINT type) = 0;
};

// Installs prompter, which the caller keeps; null installs the default. Returns the previous prompter, null
// for the default. Must not be called while worker threads run.
VASTRA_API CPrompter* SetPrompter(CPrompter* prompter);

// Show a box with the installed prompter.
VASTRA_API int AfxMessageBox(const CString& text, UINT type = MB_ICONEXCLAMATION);
VASTRA_API int AfxMessageBox(const CString& text, const CString& title, UINT type);

}  // namespace vastra
