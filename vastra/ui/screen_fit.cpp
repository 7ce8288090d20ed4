#include "vastra/ui/screen_fit.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include "vastra/ui/convert.h"
#include "vastra/ui/screen_geometry.h"

namespace vastra {
namespace {

// After a window is shown: when its frame may be known, in milliseconds.
constexpr int kLooks[] = {0, 50, 250};

// The area that scrolls the contents of a window. Keys that the contents do not use are for the window.
class CScrolledContents : public QScrollArea {
 public:
  CScrolledContents() {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override { event->ignore(); }
};

// Empty: not reported yet. A maximised window has another frame than the others.
QMargins ReportedFrame(const QWindow* window) {
  const bool isNormal = window && !(window->windowStates() & (Qt::WindowMaximized | Qt::WindowFullScreen));
  return isNormal ? window->frameMargins() : QMargins();
}

// Before any window of the program has a frame: about that of most screens.
QMargins FrameOrGuess(const QWidget& window) {
  const QMargins frame = FrameOf(window);
  const bool isOnScreen = window.windowHandle() && window.windowHandle()->isExposed();
  if (!frame.isNull() || isOnScreen) return frame;
  return {0, QApplication::style()->pixelMetric(QStyle::PM_TitleBarHeight), 0, 0};
}

QSize SizeOf(const QMargins& margins) {
  return {margins.left() + margins.right(), margins.top() + margins.bottom()};
}

QRect FreeScreen(const QWidget& window) {
  const QScreen* screen = nullptr;
  if (window.testAttribute(Qt::WA_Moved))
    screen = QGuiApplication::screenAt(window.pos() + QPoint(window.width() / 2, 0));
  if (!screen) screen = window.screen();
  return screen->availableGeometry();
}

bool IsPlaced(const QWidget& window) {
  const Qt::WindowType type = window.windowType();
  const bool isLasting = type == Qt::Window || type == Qt::Dialog || type == Qt::Tool;
  return window.isWindow() && isLasting &&
         !(window.windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen));
}

QSize LeastSize(const QWidget& window) {
  if (!window.layout()) return window.minimumSize();
  window.layout()->activate();
  return window.minimumSize().expandedTo(window.layout()->totalMinimumSize());
}

// Moves the children of window, which have places but no layout, into contents.
void MoveChildren(QWidget& window, QWidget& contents) {
  for (QWidget* child : window.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
    if (child->isWindow()) continue;
    const bool isHidden = child->isHidden();
    child->setParent(&contents);
    child->setVisible(!isHidden);
  }
  contents.setMinimumSize(window.minimumSize());
  contents.setMaximumSize(window.maximumSize());
  contents.setAttribute(Qt::WA_OpaquePaintEvent, window.testAttribute(Qt::WA_OpaquePaintEvent));
}

// Returns the widget that has the contents of window from now on, in area.
QWidget* TakeContents(QWidget& window, QScrollArea& area) {
  if (auto* main = qobject_cast<QMainWindow*>(&window)) {
    QWidget* centre = main->takeCentralWidget();
    if (centre) area.setWidget(centre);
    main->setCentralWidget(&area);
    return centre;
  }
  auto* contents = new QWidget;
  contents->resize(window.size());
  if (QLayout* layout = window.layout())
    contents->setLayout(layout);
  else
    MoveChildren(window, *contents);
  auto* around = new QVBoxLayout(&window);
  around->setContentsMargins({});
  around->addWidget(&area);
  area.setWidget(contents);
  return contents;
}

void Scroll(QWidget& window, QSize room) {
  const bool isFixed = window.minimumSize() == window.maximumSize();
  const QSize wanted = isFixed ? window.size() : LeastSize(window);
  const QPointer<QWidget> focus = window.focusWidget();  // a change of the parent ends the focus
  auto* area = new CScrolledContents;
  QWidget* contents = TakeContents(window, *area);
  const QSize bars(area->verticalScrollBar()->sizeHint().width(),
                   area->horizontalScrollBar()->sizeHint().height());
  const CSize size = ScrolledSize({wanted.width(), wanted.height()}, {room.width(), room.height()},
                                  {bars.width(), bars.height()});
  window.setMinimumSize(0, 0);
  window.setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
  window.resize(size.cx, size.cy);
  if (isFixed) window.setFixedSize(size.cx, size.cy);
  if (focus) focus->setFocus();
  if (!contents) return;
  CContentsMoved moved(*contents);
  QCoreApplication::sendEvent(&window, &moved);
}

// A message box sets its own size from its layout: only its text is scrolled.
void ScrollText(QMessageBox& box, QSize room) {
  auto* label = box.findChild<QLabel*>("qt_msgbox_label");
  const int text = label ? label->sizeHint().height() : 0;
  const int more = box.sizeHint().height() - room.height();
  if (more <= 0 || text <= 0 || qobject_cast<QScrollArea*>(label->parentWidget()->parentWidget())) return;
  auto* area = new QScrollArea(&box);
  area->setFrameShape(QFrame::NoFrame);
  area->setWidgetResizable(true);
  const int bar = area->verticalScrollBar()->sizeHint().width();
  area->setMinimumSize(std::min(label->sizeHint().width() + bar, room.width() - 2 * bar),
                       std::max(text - more, label->fontMetrics().lineSpacing() * 3));
  delete box.layout()->replaceWidget(label, area);
  area->setWidget(label);
}

void ScrollIfTooLarge(QWidget& window) {
  const QSize room = FreeScreen(window).size() - SizeOf(FrameOrGuess(window));
  if (auto* box = qobject_cast<QMessageBox*>(&window)) return ScrollText(*box, room);
  const QSize least = LeastSize(window);
  if (least.width() > room.width() || least.height() > room.height()) Scroll(window, room);
}

// isShown: the screen has placed the window, if nobody else has. The frame is that of the system's window:
// the widget can learn its own later, and has the place without it until then.
void Place(QWidget& window, bool isShown) {
  const QSize frame = SizeOf(FrameOrGuess(window));
  const QMargins own = ReportedFrame(window.windowHandle());
  const QPoint inside(own.left(), own.top());
  const QRect wanted(window.geometry().topLeft() - inside, window.size() + frame);
  const QRect place = ToRect(PutOnto(FromRect(FreeScreen(window)), FromRect(wanted)));
  if (place.size() != wanted.size()) {
    if (window.minimumSize() == window.maximumSize())
      window.setFixedSize(place.size() - frame);
    else
      window.resize(place.size() - frame);
  }
  if (place.topLeft() == wanted.topLeft() || !(isShown || window.testAttribute(Qt::WA_Moved))) return;
  if (own.isNull()) return window.move(place.topLeft());
  window.setGeometry(QRect(place.topLeft() + inside, window.size()));
}

// Places the window again with the frame that it has got.
void LookAgain(QWidget& window) {
  const auto look = [&window] {
    if (window.isVisible() && IsPlaced(window)) Place(window, true);
  };
  for (const int after : kLooks) QTimer::singleShot(after, &window, look);
}

}  // namespace

CScreenFit::CScreenFit() { QCoreApplication::instance()->installEventFilter(this); }

bool CScreenFit::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::Show || event->spontaneous() || !object->isWidgetType()) return false;
  auto& window = static_cast<QWidget&>(*object);
  if (!IsPlaced(window)) return false;
  // A window that opens again comes where it was closed, not where the screen puts new ones.
  if (QWindow* former = window.windowHandle(); former && window.windowType() == Qt::Window)
    former->setPosition(former->position());
  ScrollIfTooLarge(window);
  Place(window, false);
  LookAgain(window);
  return false;
}

QMargins FrameOf(const QWidget& window) {
  QMargins frame = ReportedFrame(window.windowHandle());
  for (const QWindow* other : QGuiApplication::topLevelWindows()) {
    if (!frame.isNull()) break;
    const bool isLike = other->type() == Qt::Window || other->type() == Qt::Dialog;
    if (isLike && other->isVisible()) frame = ReportedFrame(other);
  }
  return frame;
}

}  // namespace vastra
