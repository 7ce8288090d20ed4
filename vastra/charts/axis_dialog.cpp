#include "vastra/charts/axis_dialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "vastra/ui/number_text.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kAxisDigits = 9;

}  // namespace

CAxisDialog::CAxisDialog(const QString& title, const CChartAxis& axis, QWidget* parent)
    : QDialog(parent),
      m_axis(axis),
      m_automatic(new QCheckBox("&Automatic range", this)),
      m_low(new QLineEdit(ToScreen(NumberText(axis.range.low, kAxisDigits)), this)),
      m_high(new QLineEdit(ToScreen(NumberText(axis.range.high, kAxisDigits)), this)),
      m_fault(new QLabel(this)) {
  setWindowTitle("Axis");
  auto* what = new QLabel(title, this);
  what->setTextFormat(Qt::PlainText);
  what->setWordWrap(true);
  m_low->setAccessibleName("From");
  m_high->setAccessibleName("To");
  m_fault->setWordWrap(true);
  m_automatic->setChecked(axis.isAutomatic);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* form = new QFormLayout;
  form->addRow(m_automatic);
  form->addRow("&From:", m_low);
  form->addRow("&To:", m_high);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(what);
  layout->addLayout(form);
  layout->addWidget(m_fault);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, [this] { TakeRange(); });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  // A number that is typed is a fixed range.
  for (QLineEdit* edit : {m_low, m_high})
    connect(edit, &QLineEdit::textEdited, m_automatic, [this] { m_automatic->setChecked(false); });
}

void CAxisDialog::TakeRange() {
  CAxisRange range;
  m_axis.isAutomatic = m_automatic->isChecked();
  if (m_axis.isAutomatic) return accept();
  const bool isLow = ParseNumber(FromScreen(m_low->text()), range.low);
  const bool isHigh = ParseNumber(FromScreen(m_high->text()), range.high);
  if (isLow && isHigh && range.low < range.high) {
    m_axis.range = range;
    return accept();
  }
  m_fault->setText(!isLow    ? "From is not a number"
                   : !isHigh ? "To is not a number"
                             : "To has to be above From");
  (isLow ? m_high : m_low)->setFocus();
}

}  // namespace vastra
