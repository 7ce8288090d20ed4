// CWnd: a window or a control. It owns a widget of the toolkit and calls the virtual operations below for its
// events; derived classes override them. Only the thread of the application calls it, except for Post.
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
// Actions of a scroll bar.
constexpr UINT SB_LINEUP = 0, SB_LINEDOWN = 1, SB_PAGEUP = 2, SB_PAGEDOWN = 3, SB_THUMBPOSITION = 4,
               SB_THUMBTRACK = 5, SB_TOP = 6, SB_BOTTOM = 7;

// Keys. VK_APPS: the menu key, or Shift and F10.
constexpr UINT VK_PRIOR = 0x21, VK_NEXT = 0x22, VK_APPS = 0x5D;

class VASTRA_API CWnd : public CObject, public CMessageTarget {
  DECLARE_DYNAMIC(CWnd)
 public:
  CWnd() = default;
  ~CWnd() override;
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;

  // Creates a hidden top-level window with caption, frame, minimise and maximise boxes. place: the corner of
  // its frame, and the size of its inside with the scroll bar. parent null: the desktop.
  enum EStyle { plain = 0, verticalScrollBar = 1, ownGround = 2 };  // ownGround: OnPaint fills the whole area
  int CreateTopLevel(const CString& title, const CRect& place, CWnd* parent, int style);

  QWidget* Widget() const;  // null: there is no window
  QWidget* Client() const;  // the part that OnPaint paints
  HWND GetSafeHwnd() { return Widget() ? this : nullptr; }
  // Destroys the window and calls PostNcDestroy, which can delete the object. 1, or 0 if there is no window.
  virtual int DestroyWindow();

  void ShowWindow(int command);
  bool IsWindowVisible() const;
  bool IsIconic() const;
  virtual void SetWindowText(const CString& text);
  virtual CString GetWindowText() const;
  void EnableWindow(bool on);
  bool IsWindowEnabled() const;
  void SetFocus();
  void SetTopMost(bool on);  // does not move or resize the window

  // In client coordinates of the parent; for a top-level window the corner of its frame on the screen and the
  // size of its inside.
  void MoveWindow(const CRect& place);
  CRect GetPlace() const;        // of a control, as for MoveWindow
  CRect GetNormalPlace() const;  // of a top-level window, when it is neither minimised nor maximised
  CRect GetClientRect() const;   // at 0, 0
  // The outer edges of a top-level window with its frame, in its own client coordinates.
  CRect GetFrameRect() const;
  // Sets the minimum size, including the frame.
  void SetMinTrackSize(CSize size);

  void Invalidate();
  void InvalidateRect(const CRect& rect);
  void UpdateWindow();     // paints the invalid area at once
  int TextHeight() const;  // of a line in the window's font, pixels

  // The vertical scroll bar. A position is limited to the range; OnVScroll is called before it changes.
  void SetScrollRange(int low, int high);
  void SetScrollPos(int position);
  int GetScrollPos() const;

  void SetTimer(UINT id, UINT milliseconds);  // replaces a timer of that id
  void KillTimer(UINT id);
  // Posts to OnMessage; from any thread while the window exists.
  void Post(UINT message, WPARAM wparam, LPARAM lparam) override;

 protected:
  // Makes widget the window, in place of a former one. It is destroyed with the object or by DestroyWindow;
  // the object is notified if the toolkit destroys it. client: the widget that paints; null: widget.
  void Attach(QWidget* widget, QWidget* client = nullptr);
  // Every destructor of a class with handlers calls it first: destroys the window without events.
  void Abandon();

  // dirty: the area to be painted. False: the default.
  virtual bool OnPaint(const CRect& /*dirty*/) { return false; }
  virtual void OnSize(int /*cx*/, int /*cy*/) {}  // of the client area; also when the frame has changed
  virtual void OnClose() { DestroyWindow(); }     // the close box
  // True: the event was handled.
  virtual bool OnLButtonUp(CPoint) { return false; }
  virtual bool OnLButtonDblClk(CPoint) { return false; }
  virtual bool OnRButtonDown(CPoint) { return false; }
  virtual bool OnKeyDown(UINT /*key*/) { return false; }  // a key that no control has handled
  virtual void OnVScroll(UINT /*code*/, int /*position*/) {}
  virtual void OnTimer(UINT /*id*/) {}
  virtual void OnMessage(UINT, WPARAM, LPARAM) {}
  virtual void PostNcDestroy() {}  // after the window was destroyed

 private:
  class CEvents;  // the event filter of the widget
  friend class CEvents;

  void Detach();

  CEvents* m_events = nullptr;  // owned; null: there is no window
};

// The owner of boxes and dialogs without a parent; null: none.
QWidget* GetActiveWidget();

// Shows the wait cursor while the object exists.
class VASTRA_API CWaitCursor {
 public:
  CWaitCursor();
  ~CWaitCursor();
  CWaitCursor(const CWaitCursor&) = delete;
  CWaitCursor& operator=(const CWaitCursor&) = delete;
};

// Shows a menu of items at point of window's client area. Returns the index of the chosen item, or -1.
VASTRA_API int TrackPopupMenu(CWnd& window, CPoint point, std::initializer_list<const char*> items);

}  // namespace vastra
