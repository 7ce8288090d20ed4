// CConsole: the one owner of all console windows, known to everybody else by small numbers. It takes the
// lines that go to a console, and keeps the places of its windows from run to run.
//
//   CConsole::Instance()->Create(0, "Messages", 100, 100, 600, 300, nullptr);
//   CConsole::Instance()->ShowWindow(0, SW_SHOW);
//
// Ids go from 0 to 65535; of a larger number the lower 16 bits count. Write may come from any thread; all
// else, and the first call of Instance, is the business of the thread of the windows.
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
  // From the first call on, messages go to the windows.
  static CConsole* Instance();
  // Saves the places of the windows and takes them away, with the manager. Happens by itself when the
  // application object goes; a host that wants it sooner calls it. Not while workers run.
  static void Release();
  ~CConsole() override;

  // A new window, hidden: 1, or 0 if the id is taken. The place kept from earlier runs goes before the given
  // one, which is kept if there is none. A parent, which may be null, outlives the window.
  int Create(UINT id, const CString& title, int x, int y, int width, int height, CWnd* parent);
  // Takes a window away; the place kept is not changed. 1, or 0 if there is no such window, as the next
  // three.
  int Destroy(UINT id);
  int ShowWindow(UINT id, int command);  // an SW_ command
  int GetWindowName(UINT id, CString& name);
  int SetWindowName(UINT id, const CString& name);
  void Clear(UINT id);
  void AlwaysOnTop(UINT id, int onTop);
  int IsOnTop(UINT id);  // 0 if there is no such window
  // A line written on the windows' thread is on the screen when Write returns.
  int Write(UINT id, const CString& text, COLORREF colour, DWORD reserved) override;

 private:
  CConsole();
  CConsoleWnd* Find(UINT id);
  void Remove(unsigned short key, CConsoleWnd* window);
  void Delete();

  static SingletonSmartPtr<CConsole> m_pInstance;

  std::mutex m_lock;  // of the table. What it points to goes only when the windows' thread has taken it out
  CTypedPtrMap<CMapWordToPtr, unsigned short, CConsoleWnd*> m_windows;
  SECRegistry m_registry;
  CConsoleSink* m_formerSink;
};

}  // namespace vastra
