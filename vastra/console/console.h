// CConsole: owns all console windows, which others know by their IDs. It receives the lines for the consoles
// and saves the places of the windows.
//
//   CConsole::Instance()->Create(0, "Messages", 100, 100, 600, 300, nullptr);
//   CConsole::Instance()->ShowWindow(0, SW_SHOW);
//
// IDs are from 0 to 65535; of a larger number the lower 16 bits count. Write can be called from any thread;
// all else, and the first call of Instance, only on the thread of the windows.
#pragma once

#include <mutex>

#include "vastra/core/console_sink.h"
#include "vastra/platform/map.h"
#include "vastra/platform/singleton.h"
#include "vastra/support/registry.h"

namespace vastra {

class CConsoleWnd;
class CWnd;

class VASTRA_API CConsole : public CConsoleSink {
 public:
  // The first call installs the console sink.
  static CConsole* Instance();
  // Saves the places of the windows and destroys windows and manager. The end of the application object does
  // so, too. Not while workers run.
  static void Release();
  ~CConsole() override;

  // Creates a hidden window: 1, or 0 if the id is in use. A saved place replaces the given one; if there is
  // none, the given one is saved. The parent, if not null, must exist as long as the window.
  int Create(UINT id, const CString& title, int x, int y, int width, int height, CWnd* parent);
  // Destroys a window; the saved place does not change. 1, or 0 if there is no such window; so do the next
  // three.
  int Destroy(UINT id);
  int ShowWindow(UINT id, int command);  // an SW_ command
  int GetWindowName(UINT id, CString& name);
  int SetWindowName(UINT id, const CString& name);
  void Clear(UINT id);
  void AlwaysOnTop(UINT id, int onTop);
  int IsOnTop(UINT id);  // 0 if there is no such window
  // A line written on the thread of the windows is on the screen when Write returns.
  int Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) override;

 private:
  CConsole();
  CConsoleWnd* Find(UINT id);
  void Remove(unsigned short key, CConsoleWnd* window);
  void Delete();

  static SingletonSmartPtr<CConsole> m_pInstance;

  std::mutex m_lock;  // of the table. The thread of the windows removes a window from it before it destroys
                      // the window
  CTypedPtrMap<CMapWordToPtr, unsigned short, CConsoleWnd*> m_windows;
  SECRegistry m_registry;
  CConsoleSink* m_formerSink;
};

}  // namespace vastra
