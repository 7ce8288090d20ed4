#include "host/desktop/problem_banner.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QStyle>

#include <algorithm>

#include "host/desktop/condition_icon.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr std::size_t kMostTips = 20;  // problems in the tool tip

ECondition SignOf(CPlantProblem::EWeight weight) {
  constexpr ECondition kWeightSigns[] = {ECondition::waiting, ECondition::away, ECondition::failed};
  return kWeightSigns[static_cast<std::size_t>(weight)];
}

QString TextOf(const std::vector<CPlantProblem>& problems) {
  const QString text = ToScreen(problems.front().text);
  return problems.size() == 1 ? text : text + QString(" (%1 more)").arg(problems.size() - 1);
}

QString TipOf(const std::vector<CPlantProblem>& problems) {
  QString tip;
  for (std::size_t i = 0; i < std::min(problems.size(), kMostTips); ++i)
    tip += (i ? "<br>" : "") + ToScreen(problems[i].text).toHtmlEscaped();
  return tip;
}

}  // namespace

CProblemBanner::CProblemBanner(std::function<void(const CString&)> acknowledge, QWidget* parent)
    : QFrame(parent), m_acknowledge(std::move(acknowledge)) {
  setFrameShape(QFrame::StyledPanel);
  setBackgroundRole(QPalette::ToolTipBase);
  setAutoFillBackground(true);
  m_sign = new QLabel(this);
  m_text = new QLabel(this);
  m_text->setForegroundRole(QPalette::ToolTipText);
  m_text->setTextFormat(Qt::PlainText);
  m_text->setWordWrap(true);
  m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
  m_text->setAccessibleName("Problem");
  m_button = new QPushButton("&Acknowledge", this);
  m_button->setToolTip("Hides this problem until it comes back (Ctrl+K)");
  auto* layout = new QHBoxLayout(this);
  layout->addWidget(m_sign);
  layout->addWidget(m_text, 1);
  layout->addWidget(m_button);
  connect(m_button, &QPushButton::clicked, this, [this] { m_acknowledge(CString(m_identity)); });
  auto* key = new QShortcut(QKeySequence("Ctrl+K"), this);
  connect(key, &QShortcut::activated, m_button, &QPushButton::click);
  hide();
}

void CProblemBanner::Show(const std::vector<CPlantProblem>& problems) {
  if (problems.empty()) return hide();
  m_identity = problems.front().identity;
  const int size = style()->pixelMetric(QStyle::PM_LargeIconSize, nullptr, this);
  m_sign->setPixmap(IconOf(SignOf(problems.front().weight)).pixmap(QSize(size, size), devicePixelRatioF()));
  m_text->setText(TextOf(problems));
  m_text->setToolTip(TipOf(problems));
  show();
}

}  // namespace vastra
