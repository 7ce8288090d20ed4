#include "vastra/support/browse_edit.h"

#include <QLineEdit>
#include <QPushButton>

#include "vastra/platform/chooser.h"

namespace vastra {

void SECBrowseDirEdit::SubclassDlgItem(const CDialog& dialog, const char* caption) {
  QWidget* edit = dialog.Edit(caption).Widget();
  Attach(edit);
  m_button = new QPushButton("...", edit);
  m_button->setAutoDefault(false);
  m_button->setCursor(Qt::ArrowCursor);
  m_button->setToolTip("Choose the folder");
  m_button->setAccessibleName("Browse");
  QWidget::setTabOrder(edit, m_button);
  QObject::connect(m_button, &QPushButton::clicked, edit, [this] { OnBrowse(); });
  OnSize(edit->width(), edit->height());
}

void SECBrowseDirEdit::OnSize(int cx, int cy) {
  if (!m_button) return;
  const int width = std::max(cy, m_button->fontMetrics().horizontalAdvance("....."));
  m_button->setGeometry(cx - width, 0, width, cy);
  static_cast<QLineEdit*>(Widget())->setTextMargins(0, 0, width, 0);
}

void SECBrowseDirEdit::OnBrowse() {
  CString path = GetWindowText();
  if (ChooseFolder(path)) SetWindowText(path);
}

}  // namespace vastra
