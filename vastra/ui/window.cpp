#include "vastra/ui/window.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDialog>
#include <QHash>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QScrollBar>
#include <QTimer>
#include <QWindow>

#include <utility>

#include "vastra/ui/convert.h"
#include "vastra/ui/screen_fit.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

CPoint PlaceOf(const QMouseEvent& event) {
  const QPoint place = event.position().toPoint();
  return {place.x(), place.y()};
}

// A posted message.
class CPosted : public QEvent {
 public:
  static constexpr QEvent::Type kType = QEvent::User;
  explicit CPosted(const CMessage& message) : QEvent(kType), m_message(message) {}
  const CMessage m_message;
};

// The scroll code of an action of the toolkit's scroll bar.
UINT ScrollCode(int action) {
  switch (action) {
    case QAbstractSlider::SliderSingleStepAdd:
      return SB_LINEDOWN;
    case QAbstractSlider::SliderSingleStepSub:
      return SB_LINEUP;
    case QAbstractSlider::SliderPageStepAdd:
      return SB_PAGEDOWN;
    case QAbstractSlider::SliderPageStepSub:
      return SB_PAGEUP;
    case QAbstractSlider::SliderToMinimum:
      return SB_TOP;
    case QAbstractSlider::SliderToMaximum:
      return SB_BOTTOM;
    default:
      return SB_THUMBTRACK;
  }
}

// 0: a key without a code.
UINT KeyOf(const QKeyEvent& event) {
  switch (event.key()) {
    case Qt::Key_PageUp:
      return VK_PRIOR;
    case Qt::Key_PageDown:
      return VK_NEXT;
    case Qt::Key_Menu:
      return VK_APPS;
    case Qt::Key_F10:
      return event.modifiers() & Qt::ShiftModifier ? VK_APPS : 0;
    default:
      return 0;
  }
}

// A top-level window with a scroll bar beside its client area.
class CScrolled : public QAbstractScrollArea {
 public:
  explicit CScrolled(QWidget* parent) : QAbstractScrollArea(parent) {
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    // The toolkit's menu would move the bar without OnVScroll.
    verticalScrollBar()->setContextMenuPolicy(Qt::NoContextMenu);
  }
};

}  // namespace

// Filters the events of a window's widget and calls the operations of the window. It exists until the event
// in which the window was destroyed has ended.
class CWnd::CEvents : public QObject {
 public:
  CEvents(CWnd& owner, QWidget* widget, QWidget* client)
      : m_owner(&owner), m_widget(widget), m_client(client) {
    widget->installEventFilter(this);
    if (client != widget) client->installEventFilter(this);
    connect(widget, &QObject::destroyed, this, [this] {
      if (CWnd* gone = Leave()) gone->Detach();
    });
    if (QScrollBar* bar = ScrollBar()) {
      connect(bar, &QAbstractSlider::actionTriggered, this, [this, bar](int action) {
        if (m_owner) m_owner->OnVScroll(ScrollCode(action), bar->sliderPosition());
      });
    }
  }

  bool eventFilter(QObject* object, QEvent* event) override {
    if (m_owner && object == m_client && OfClient(*event)) return true;
    if (m_owner && object == m_widget) return OfWindow(*event);
    return false;
  }

  void customEvent(QEvent* event) override {
    if (!m_owner || event->type() != CPosted::kType) return;
    const CMessage message = static_cast<CPosted*>(event)->m_message;
    m_owner->OnMessage(message.m_message, message.m_wparam, message.m_lparam);
  }

  void timerEvent(QTimerEvent* event) override {
    if (m_owner) m_owner->OnTimer(m_timers.key(event->timerId()));
  }

  QScrollBar* ScrollBar() const {
    auto* area = dynamic_cast<CScrolled*>(m_widget);
    return area ? area->verticalScrollBar() : nullptr;
  }

  // Ends the filtering. Returns the window; null if it had ended before.
  CWnd* Leave() {
    CWnd* owner = std::exchange(m_owner, nullptr);
    if (owner) deleteLater();
    return owner;
  }

  void LimitSize() {
    if (m_minTrackSize == QSize()) return;
    const QMargins frame = FrameOf(*m_widget);
    const QSize least = m_minTrackSize - QSize(frame.left() + frame.right(), frame.top() + frame.bottom());
    (IsScrolled() ? m_client : m_widget)->setMinimumSize(least);
  }

  // Whether the contents are larger than the screen, see CContentsMoved.
  bool IsScrolled() const { return m_client != m_widget && !ScrollBar(); }

  // The toolkit's normal geometry is not usable: a maximised window has another frame, and some window
  // managers do not report that a minimised window is maximised.
  void TakeNormalPlace() {
    const bool isNormal =
        !(m_widget->windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen));
    if (isNormal || m_normalPlace.isNull()) m_normalPlace = QRect(m_widget->pos(), m_widget->size());
  }

  CWnd* m_owner;  // null: the window was destroyed
  QWidget* const m_widget;
  QWidget* m_client;
  QHash<UINT, int> m_timers;
  QRegion m_invalid;
  QSize m_minTrackSize;
  QRect m_normalPlace;  // of a top-level window: corner of the frame, size of the inside

 private:
  bool OfClient(QEvent& event) {
    switch (event.type()) {
      case QEvent::Paint:
        m_invalid -= static_cast<QPaintEvent&>(event).region();
        return m_owner->OnPaint(FromRect(static_cast<QPaintEvent&>(event).rect()));
      case QEvent::Resize:
        m_owner->OnSize(m_client->width(), m_client->height());
        return false;
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonRelease:
      case QEvent::MouseButtonDblClick:
        return OfMouse(static_cast<QMouseEvent&>(event));
      default:
        return false;
    }
  }

  bool OfMouse(const QMouseEvent& event) {
    const CPoint place = PlaceOf(event);
    if (event.button() == Qt::RightButton)
      return event.type() == QEvent::MouseButtonPress && m_owner->OnRButtonDown(place);
    if (event.button() != Qt::LeftButton) return false;
    if (event.type() == QEvent::MouseButtonRelease) return m_owner->OnLButtonUp(place);
    return event.type() == QEvent::MouseButtonDblClick && m_owner->OnLButtonDblClk(place);
  }

  bool OfWindow(QEvent& event) {
    if (!m_widget->isWindow()) return false;
    if (event.type() == CContentsMoved::kType) TakeClient(static_cast<CContentsMoved&>(event).m_contents);
    if (event.type() == QEvent::Show || event.type() == QEvent::Move) TakeFrame();
    if (event.type() == QEvent::Show) TakeFrameLater();
    if (event.type() == QEvent::Resize || event.type() == QEvent::Move) TakeNormalPlace();
    if (event.type() == QEvent::KeyPress) {
      const UINT key = KeyOf(static_cast<QKeyEvent&>(event));
      return key != 0 && m_owner->OnKeyDown(key);
    }
    if (event.type() != QEvent::Close || qobject_cast<QDialog*>(m_widget)) return false;
    event.ignore();
    m_owner->OnClose();
    return true;
  }

  void TakeClient(QWidget& client) {
    client.installEventFilter(this);
    m_client = &client;
  }

  // The screen reports the frame some time after the window is shown, without an event if it does not move.
  void TakeFrameLater() {
    for (const int after : {0, 50, 250}) {
      QTimer::singleShot(after, this, [this] {
        if (m_owner) TakeFrame();
      });
    }
  }

  // The frame is known only while the window is on the screen.
  void TakeFrame() {
    const QMargins frame(m_widget->geometry().left() - m_widget->frameGeometry().left(),
                         m_widget->geometry().top() - m_widget->frameGeometry().top(), 0, 0);
    if (frame == m_frame) return;
    m_frame = frame;
    LimitSize();
    m_owner->OnSize(m_client->width(), m_client->height());
  }

  QMargins m_frame;
};

IMPLEMENT_DYNAMIC(CWnd, CObject)

CWnd::~CWnd() { Abandon(); }

void CWnd::Abandon() {
  QWidget* widget = Widget();
  if (!widget) return;
  m_events->Leave();
  m_events = nullptr;
  widget->hide();
  widget->deleteLater();
}

int CWnd::CreateTopLevel(const CString& title, const CRect& place, CWnd* parent, int style) {
  QWidget* over = parent ? parent->Widget() : nullptr;
  QWidget* widget = nullptr;
  QWidget* client = nullptr;
  if (style & verticalScrollBar) {
    auto* scrolled = new CScrolled(over);
    widget = scrolled;
    client = scrolled->viewport();
  } else {
    widget = client = new QWidget(over);
  }
  widget->setWindowFlag(Qt::Window);
  if (style & ownGround) client->setAttribute(Qt::WA_OpaquePaintEvent);
  Attach(widget, client);
  SetWindowText(title);
  MoveWindow(place);
  return 1;
}

void CWnd::Attach(QWidget* widget, QWidget* client) {
  Abandon();
  m_events = new CEvents(*this, widget, client ? client : widget);
}

QWidget* CWnd::Widget() const { return m_events ? m_events->m_widget : nullptr; }

QWidget* CWnd::Client() const { return m_events ? m_events->m_client : nullptr; }

int CWnd::DestroyWindow() {
  if (!m_events) return 0;
  Abandon();
  Detach();
  return 1;
}

void CWnd::Detach() {
  m_events = nullptr;
  PostNcDestroy();
}

void CWnd::ShowWindow(int command) {
  QWidget* widget = Widget();
  if (!widget) return;
  switch (command) {
    case SW_HIDE:
      widget->hide();
      return;
    case SW_SHOWMINIMIZED:
    case SW_MINIMIZE:
      widget->showMinimized();
      return;
    case SW_SHOWMAXIMIZED:
      widget->showMaximized();
      return;
    case SW_SHOWNOACTIVATE:
      widget->show();
      return;
    case SW_SHOWNORMAL:
    case SW_RESTORE:
      widget->showNormal();
      break;
    default:
      widget->show();
  }
  widget->raise();
  widget->activateWindow();
}

bool CWnd::IsWindowVisible() const { return Widget() && Widget()->isVisible(); }

bool CWnd::IsIconic() const { return Widget() && Widget()->isMinimized(); }

void CWnd::SetWindowText(const CString& text) {
  if (Widget()) Widget()->setWindowTitle(ToScreen(text));
}

CString CWnd::GetWindowText() const { return Widget() ? FromScreen(Widget()->windowTitle()) : CString(); }

void CWnd::EnableWindow(bool on) {
  if (Widget()) Widget()->setEnabled(on);
}

bool CWnd::IsWindowEnabled() const { return Widget() && Widget()->isEnabled(); }

void CWnd::SetFocus() {
  if (Widget()) Widget()->setFocus();
}

void CWnd::SetTopMost(bool on) {
  QWidget* widget = Widget();
  if (!widget) return;
  // By the native window: the widget's own flag would hide the window and show it again.
  if (QWindow* window = widget->windowHandle()) window->setFlag(Qt::WindowStaysOnTopHint, on);
  widget->overrideWindowFlags(widget->windowFlags().setFlag(Qt::WindowStaysOnTopHint, on));
}

void CWnd::MoveWindow(const CRect& place) {
  QWidget* widget = Widget();
  if (!widget) return;
  widget->move(place.left, place.top);
  widget->resize(place.Width(), place.Height());
  m_events->TakeNormalPlace();
  if (widget->isVisible() || !m_events->ScrollBar()) return;
  // A hidden window gets its layout when it is shown, but its client area is needed before.
  QResizeEvent resized(widget->size(), widget->size());
  QCoreApplication::sendEvent(widget, &resized);
}

CRect CWnd::GetPlace() const { return Widget() ? FromRect(Widget()->geometry()) : CRect(); }

CRect CWnd::GetNormalPlace() const {
  if (!m_events) return {};
  m_events->TakeNormalPlace();
  return FromRect(m_events->m_normalPlace);
}

CRect CWnd::GetClientRect() const { return Client() ? FromRect(Client()->rect()) : CRect(); }

CRect CWnd::GetFrameRect() const {
  if (!Widget()) return {};
  const QRect frame = Widget()->frameGeometry(), inside = Widget()->geometry();
  const QSize scrolled = m_events->IsScrolled() ? m_events->m_client->size() - inside.size() : QSize(0, 0);
  return FromRect(QRect(frame.topLeft() - inside.topLeft(), frame.size() + scrolled));
}

void CWnd::SetMinTrackSize(CSize size) {
  if (!m_events) return;
  m_events->m_minTrackSize = QSize(size.cx, size.cy);
  m_events->LimitSize();
}

void CWnd::Invalidate() { InvalidateRect(GetClientRect()); }

void CWnd::InvalidateRect(const CRect& rect) {
  if (!m_events) return;
  m_events->m_invalid += ToRect(rect);
  m_events->m_client->update(ToRect(rect));
}

void CWnd::UpdateWindow() {
  if (!m_events) return;
  const QRegion invalid = std::exchange(m_events->m_invalid, QRegion());
  if (!invalid.isEmpty()) m_events->m_client->repaint(invalid);
}

int CWnd::TextHeight() const { return Client() ? Client()->fontMetrics().height() : 0; }

void CWnd::SetScrollRange(int low, int high) {
  if (QScrollBar* bar = m_events ? m_events->ScrollBar() : nullptr) bar->setRange(low, high);
}

void CWnd::SetScrollPos(int position) {
  if (QScrollBar* bar = m_events ? m_events->ScrollBar() : nullptr) bar->setValue(position);
}

int CWnd::GetScrollPos() const {
  const QScrollBar* bar = m_events ? m_events->ScrollBar() : nullptr;
  return bar ? bar->value() : 0;
}

void CWnd::SetTimer(UINT id, UINT milliseconds) {
  if (!m_events) return;
  KillTimer(id);
  m_events->m_timers[id] = m_events->startTimer(static_cast<int>(milliseconds), Qt::PreciseTimer);
}

void CWnd::KillTimer(UINT id) {
  if (m_events && m_events->m_timers.contains(id)) m_events->killTimer(m_events->m_timers.take(id));
}

void CWnd::Post(UINT message, WPARAM wparam, LPARAM lparam) {
  if (m_events) QCoreApplication::postEvent(m_events, new CPosted({message, wparam, lparam}));
}

QWidget* GetActiveWidget() {
  QWidget* active = QApplication::activeWindow();
  return active && active->isVisible() ? active : nullptr;  // a hidden one can be about to be destroyed
}

CWaitCursor::CWaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }

CWaitCursor::~CWaitCursor() { QApplication::restoreOverrideCursor(); }

int TrackPopupMenu(CWnd& window, CPoint point, std::initializer_list<const char*> items) {
  if (!window.Client()) return -1;
  QMenu menu;
  for (const char* item : items) menu.addAction(ToScreen(CString(item)));
  QObject::connect(window.Client(), &QObject::destroyed, &menu, &QMenu::close);
  const QAction* chosen = menu.exec(window.Client()->mapToGlobal(QPoint(point.x, point.y)));
  return static_cast<int>(menu.actions().indexOf(chosen));
}

}  // namespace vastra
