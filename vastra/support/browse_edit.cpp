#include "vastra/support/browse_edit.h"

#include <QLineEdit>
#include <QPushButton>

#include "vastra/platform/chooser.h"

namespace vastra {

void SECBrowseDirEdit::SubclassDlgItem(const CDialog& dialog, const char* caption) {
  QWidget* edit = dialog.Edit(caption).Widget();
  Attach(edit);
  auto* button = new QPushButton("...", edit->parentWidget());
  button->setAutoDefault(false);
  button->setToolTip("Choose the folder");
  QRect place = edit->geometry();
  place.setLeft(place.right() + 1 -
                std::max(place.height(), button->fontMetrics().horizontalAdvance("....")));
  button->setGeometry(place);
  edit->setGeometry(edit->geometry().adjusted(0, 0, -place.width(), 0));
  QWidget::setTabOrder(edit, button);
  QObject::connect(button, &QPushButton::clicked, edit, [this] { OnBrowse(); });
}

void SECBrowseDirEdit::OnBrowse() {
  CString path = GetWindowText();
  if (ChooseFolder(path)) SetWindowText(path);
}

}  // namespace vastra
