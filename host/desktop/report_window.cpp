#include "host/desktop/report_window.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "vastra/platform/chooser.h"
#include "vastra/platform/prompt.h"
#include "vastra/platform/save_file.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/text.h"

namespace vastra {

CReportWindow::CReportWindow(CString text, QWidget* parent) : QDialog(parent), m_text(std::move(text)) {
  setWindowTitle("Report");
  auto* lines = new QPlainTextEdit(ToScreenLines(m_text), this);
  lines->setReadOnly(true);
  lines->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  lines->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  lines->setAccessibleName("Report");
  RingOnFocus(*lines);
  auto* buttons = new QDialogButtonBox(this);
  connect(buttons->addButton("&Save...", QDialogButtonBox::ActionRole), &QPushButton::clicked, this,
          [this] { Save(); });
  connect(buttons->addButton("&Copy", QDialogButtonBox::ActionRole), &QPushButton::clicked, this,
          [this] { Copy(); });
  connect(buttons->addButton(QDialogButtonBox::Close), &QPushButton::clicked, this, &QDialog::close);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(lines);
  layout->addWidget(buttons);
  resize(lines->fontMetrics().averageCharWidth() * 90, lines->fontMetrics().height() * 36);
}

void CReportWindow::Save() {
  CFileQuestion question;
  question.save = question.asksToOverwrite = true;
  question.defaultExtension = "txt";
  question.name = "Report";
  question.filter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*||";
  CString path;
  if (!ChooseFile(question, path)) return;
  try {
    SaveFile(path, [this](CFile& file) { file.Write(m_text.View().data(), m_text.View().size()); });
  } catch (const CFileException& fault) {
    AfxMessageBox(path + ": " + fault.Text(), MB_OK | MB_ICONEXCLAMATION);
  }
}

void CReportWindow::Copy() { QGuiApplication::clipboard()->setText(ToScreenLines(m_text)); }

}  // namespace vastra
