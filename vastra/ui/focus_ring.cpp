#include "vastra/ui/focus_ring.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QPainter>

namespace vastra {
namespace {

constexpr int kRingWidth = 2;

// Over its parent, whose events it follows. Only the ring covers the parent.
class CFocusRing : public QWidget {
 public:
  explicit CFocusRing(QWidget& parent) : QWidget(&parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    parent.installEventFilter(this);
    Fit();
    setVisible(parent.hasFocus());
  }

  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Resize) Fit();
    if (event->type() == QEvent::FocusIn) show(), raise();
    if (event->type() == QEvent::FocusOut) hide();
    return false;
  }

 protected:
  void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), palette().highlight()); }

 private:
  void Fit() {
    setGeometry(parentWidget()->rect());
    setMask(QRegion(rect()) - QRegion(rect().adjusted(kRingWidth, kRingWidth, -kRingWidth, -kRingWidth)));
  }
};

}  // namespace

void RingOnFocus(QAbstractScrollArea& area) { new CFocusRing(area); }

}  // namespace vastra
