#include "host/desktop/window_keys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMainWindow>

namespace vastra {

CWindowKeys::CWindowKeys() { qApp->installEventFilter(this); }

bool CWindowKeys::eventFilter(QObject* watched, QEvent* event) {
  if (!watched->isWidgetType()) return false;
  switch (event->type()) {
    case QEvent::KeyPress:
      m_isByKey = true;
      return Close(watched, *static_cast<QKeyEvent*>(event));
    case QEvent::ShortcutOverride:
      m_isByKey = true;
      return false;
    case QEvent::MouseButtonPress:
      m_isByKey = false;
      return false;
    case QEvent::Show:
      if (auto* widget = static_cast<QWidget*>(watched); widget->isWindow() && m_isByKey)
        widget->setAttribute(Qt::WA_KeyboardFocusChange);
      return false;
    default:
      return false;
  }
}

// The main window has Quit, and a chart has an entry of its menu with the same key.
bool CWindowKeys::Close(const QObject* watched, const QKeyEvent& key) {
  QWidget* window = static_cast<const QWidget*>(watched)->window();
  const bool isOurs = window->windowType() == Qt::Window && !qobject_cast<QMainWindow*>(window);
  return isOurs && key.matches(QKeySequence::Close) && window->close();
}

}  // namespace vastra
