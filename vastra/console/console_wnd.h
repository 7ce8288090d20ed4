// CConsoleWnd: a console window, which shows the newest lines. Only CConsole owns and uses it.
#pragma once

#include <deque>
#include <mutex>
#include <thread>

#include "vastra/console/console_rules.h"
#include "vastra/ui/drawing.h"
#include "vastra/ui/window.h"

namespace vastra {

class CConsoleWnd : public CWnd {
 public:
  // Creates the hidden window on the calling thread; 1.
  int Create(const CString& title, int x, int y, int width, int height, CWnd* parent);
  // 1, or 0 if there is no window.
  int Destroy() { return DestroyWindow(); }
  bool IsOnItsThread() const { return std::this_thread::get_id() == m_thread; }

  // Adds a line; from any thread while the window exists. A line of the window's thread is on the screen when
  // Write returns, after all earlier lines. A line of another thread is shown later by the window's thread.
  void Write(const CString& text, COLORREF colour, DWORD reserved);
  void Clear();

  int m_onTop = 0;  // used by CConsole

 protected:
  bool OnPaint(const CRect& dirty) override;
  void OnSize(int cx, int cy) override;
  void OnClose() override { ShowWindow(SW_HIDE); }
  void OnVScroll(UINT code, int position) override;
  void OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

 private:
  CConsoleArea Area() const;
  bool IsSeen() const { return IsWindowVisible() && !IsIconic(); }
  void Queue(const CString& text, COLORREF colour);
  bool TakeQueued();
  void Redraw();
  void Draw(CConsoleArea area);
  void DrawRows(int firstRow, CConsoleArea area);

  CConsoleStore m_store;
  CBitmap m_picture;  // of the client area
  CConsoleRows m_rows;
  std::thread::id m_thread;

  // Lines of other threads that are not in the store yet.
  std::mutex m_lock;
  std::deque<CConsoleStore::CLine> m_queued;
};

}  // namespace vastra
