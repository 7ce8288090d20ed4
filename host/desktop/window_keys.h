// CWindowKeys: what keys do in all windows of the program. Ctrl+W closes a window that has no menu for it,
// and a window that a key has opened shows its focus at once, not only after the first Tab.
#pragma once

#include <QObject>

class QKeyEvent;

namespace vastra {

class CWindowKeys : public QObject {
 public:
  CWindowKeys();  // of the application, which exists

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  static bool Close(const QObject* watched, const QKeyEvent& key);

  bool m_isByKey = false;  // the newest input was a key, not the mouse
};

}  // namespace vastra
