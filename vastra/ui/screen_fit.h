// CScreenFit: keeps the windows of the program on the screen. A window that opens is cut to the part of the
// screen that is free of panels, with its frame, and moved into it. Contents that need more room than that
// are scrolled; they keep their layout. CWindows makes the object.
#pragma once

#include <QEvent>
#include <QMargins>
#include <QObject>

class QWidget;

namespace vastra {

class CScreenFit : public QObject {
 public:
  CScreenFit();  // listens to all windows while it exists
  bool eventFilter(QObject* object, QEvent* event) override;
};

// Sent to a window when its contents have moved into a widget of their own, which is scrolled.
class CContentsMoved : public QEvent {
 public:
  static constexpr QEvent::Type kType = static_cast<QEvent::Type>(QEvent::User + 1);
  explicit CContentsMoved(QWidget& contents) : QEvent(kType), m_contents(contents) {}
  QWidget& m_contents;
};

// The frame of a top-level window. Until the screen has reported it, that of another window of the program;
// without one it is empty.
QMargins FrameOf(const QWidget& window);

}  // namespace vastra
