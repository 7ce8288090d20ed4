#include "vastra/ui/elided_label.h"

#include <QHelpEvent>
#include <QLabel>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace vastra {
namespace {

class CElidedLabel : public QLabel {
 public:
  explicit CElidedLabel(QWidget* parent) : QLabel(parent) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setTextFormat(Qt::PlainText);
  }

 protected:
  bool event(QEvent* event) override {
    if (event->type() != QEvent::ToolTip) return QLabel::event(event);
    const bool isCut = Shown() != text();
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                       isCut ? text().toHtmlEscaped() : QString(), this);
    return true;
  }
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), int{Qt::AlignVCenter} | int{Qt::AlignLeft}, palette(),
                          isEnabled(), Shown(), foregroundRole());
  }

 private:
  QString Shown() const { return fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()); }
};

}  // namespace

QLabel* NewElidedLabel(QWidget* parent) { return new CElidedLabel(parent); }

}  // namespace vastra
