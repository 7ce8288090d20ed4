// CWnd: a window or a control. It carries a widget of the toolkit and hands its events to the operations
// below; a class of ours derives from it and replaces those it wants. Only the thread of the application
// calls it, but for Post.
#pragma once

#include <initializer_list>

#include "vastra/platform/message.h"
#include "vastra/platform/object.h"
#include "vastra/platform/string.h"
#include "vastra/ui/geometry.h"

class QWidget;

namespace vastra {

class CDC;

// Show commands.
constexpr int SW_HIDE = 0, SW_SHOWNORMAL = 1, SW_SHOWMINIMIZED = 2, SW_SHOWMAXIMIZED = 3,
              SW_SHOWNOACTIVATE = 4, SW_SHOW = 5, SW_MINIMIZE = 6, SW_RESTORE = 9;
// What a scroll bar was asked for.
constexpr UINT SB_LINEUP = 0, SB_LINEDOWN = 1, SB_PAGEUP = 2, SB_PAGEDOWN = 3, SB_THUMBPOSITION = 4,
               SB_THUMBTRACK = 5, SB_TOP = 6, SB_BOTTOM = 7;

// Keys. VK_APPS: the one for the menu of what is marked, or Shift and F10.
constexpr UINT VK_PRIOR = 0x21, VK_NEXT = 0x22, VK_APPS = 0x5D;

class VASTRA_API CWnd : public CObject, public CMessageTarget {
  DECLARE_DYNAMIC(CWnd)
 public:
  CWnd() = default;
  ~CWnd() override;
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;

  // A top-level window with caption, frame, minimise and maximise boxes, hidden at first. place: the corner
  // of its frame and the size of what is inside, the scroll bar included. parent null: the desktop.
  enum EStyle { plain = 0, verticalScrollBar = 1, ownGround = 2 };  // ownGround: OnPaint fills all of it
  int CreateTopLevel(const CString& title, const CRect& place, CWnd* parent, int style);

  QWidget* Widget() const;  // null: there is no window
  QWidget* Client() const;  // the part of it that the window paints
  HWND GetSafeHwnd() { return Widget() ? this : nullptr; }
  // Takes the window off the screen and runs PostNcDestroy, which may delete the object. 1, or 0 if there is
  // no window.
  virtual int DestroyWindow();

  void ShowWindow(int command);
  bool IsWindowVisible() const;
  bool IsIconic() const;
  virtual void SetWindowText(const CString& text);
  virtual CString GetWindowText() const;
  void EnableWindow(bool on);
  bool IsWindowEnabled() const;
  void SetFocus();
  void SetTopMost(bool on);  // neither moves nor resizes it

  // In client coordinates of the parent; for a top-level window the corner of its frame on the screen and the
  // size of what is inside.
  void MoveWindow(const CRect& place);
  CRect GetPlace() const;        // of a control, as MoveWindow takes it
  CRect GetNormalPlace() const;  // of a top-level window, when it is neither minimised nor maximised
  CRect GetClientRect() const;   // at 0, 0
  // The outer edges of a top-level window, its frame included, in its own client coordinates.
  CRect GetFrameRect() const;
  // The user cannot make the window smaller than size, frame included.
  void SetMinTrackSize(CSize size);

  void Invalidate();
  void InvalidateRect(const CRect& rect);
  void UpdateWindow();     // paints at once what is invalid
  int TextHeight() const;  // of a line in the window's font, pixels

  // The vertical scroll bar. A position is kept within the range, and OnVScroll sees the one from before.
  void SetScrollRange(int low, int high);
  void SetScrollPos(int position);
  int GetScrollPos() const;

  void SetTimer(UINT id, UINT milliseconds);  // replaces a timer of that id
  void KillTimer(UINT id);
  // Posts to OnMessage; from any thread, as long as the window is there.
  void Post(UINT message, WPARAM wparam, LPARAM lparam) override;

 protected:
  // Takes widget for its window, in place of a former one. The window dies with the object or by
  // DestroyWindow, and the object learns when the toolkit takes it away. client: where it paints; null:
  // widget.
  void Attach(QWidget* widget, QWidget* client = nullptr);
  // What every destructor of a class with handlers begins with: the window goes, and nothing is told of it.
  void Abandon();

  // dirty: what is to be painted. False: there is nothing of its own.
  virtual bool OnPaint(const CRect& /*dirty*/) { return false; }
  virtual void OnSize(int /*cx*/, int /*cy*/) {}  // of the client area; also when the frame has changed
  virtual void OnClose() { DestroyWindow(); }     // the close box
  // True: the event is dealt with.
  virtual bool OnLButtonUp(CPoint) { return false; }
  virtual bool OnLButtonDblClk(CPoint) { return false; }
  virtual bool OnRButtonDown(CPoint) { return false; }
  virtual bool OnKeyDown(UINT /*key*/) { return false; }  // one that no control has taken
  virtual void OnVScroll(UINT /*code*/, int /*position*/) {}
  virtual void OnTimer(UINT /*id*/) {}
  virtual void OnMessage(UINT, WPARAM, LPARAM) {}
  virtual void PostNcDestroy() {}  // the window is gone

 private:
  class CEvents;  // what listens to the widget
  friend class CEvents;

  void Detach();

  CEvents* m_events = nullptr;  // owned; null: there is no window
};

// The window that a box or a dialog without a parent belongs to; null: none.
QWidget* GetActiveWidget();

// An hourglass in place of the mouse pointer.
class VASTRA_API CWaitCursor {
 public:
  CWaitCursor();
  ~CWaitCursor();
  CWaitCursor(const CWaitCursor&) = delete;
  CWaitCursor& operator=(const CWaitCursor&) = delete;
};

// Shows items at point of window's client area, where a button is down, and gives the index of the chosen
// one, or -1.
VASTRA_API int TrackPopupMenu(CWnd& window, CPoint point, std::initializer_list<const char*> items);

}  // namespace vastra
