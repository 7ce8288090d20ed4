#include "vastra/ui/search_field.h"

#include <QKeyEvent>
#include <QLineEdit>

namespace vastra {
namespace {

class CSearchField : public QLineEdit {
 public:
  using QLineEdit::QLineEdit;

 protected:
  // Esc is taken before it is a shortcut of the window, or the Cancel of a dialog.
  bool event(QEvent* event) override {
    const QEvent::Type type = event->type();
    if ((type != QEvent::ShortcutOverride && type != QEvent::KeyPress) || text().isEmpty() ||
        static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape)
      return QLineEdit::event(event);
    if (type == QEvent::KeyPress) clear();
    event->accept();
    return true;
  }
};

}  // namespace

QLineEdit* NewSearchField(const char* caption, QWidget* parent) {
  auto* field = new CSearchField(parent);
  field->setPlaceholderText(caption);
  field->setAccessibleName("Search");
  field->setClearButtonEnabled(true);
  return field;
}

}  // namespace vastra
