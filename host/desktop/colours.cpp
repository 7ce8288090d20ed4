#include "host/desktop/colours.h"

#include <QActionGroup>
#include <QApplication>
#include <QMenu>
#include <QPalette>
#include <QStyle>

#include <algorithm>
#include <iterator>

namespace vastra {
namespace {

constexpr const char* kColoursKey = "Colours";

QPalette SystemPalette() { return {}; }  // with nothing of its own
QPalette LightPalette() { return QApplication::style()->standardPalette(); }

struct CChoice {
  const char *caption, *setting;
  QPalette (*palette)();
};
constexpr CChoice kChoices[] = {
    {"As the &System", "", SystemPalette}, {"&Light", "light", LightPalette}, {"&Dark", "dark", DarkPalette}};

int ChoiceOf(const CString& setting) {
  const auto* found =
      std::ranges::find_if(kChoices, [&](const CChoice& choice) { return setting == choice.setting; });
  return found == std::end(kChoices) ? 0 : static_cast<int>(found - kChoices);
}

}  // namespace

QPalette DarkPalette() {
  const QColor window(0x2b, 0x2d, 0x30), base(0x1e, 0x1f, 0x22), text(0xe2, 0xe4, 0xe8),
      faint(0x8a, 0x8e, 0x94);
  QPalette dark(text, window, window.lighter(150), window.darker(160), window.darker(120), text, base);
  dark.setColor(QPalette::Button, QColor(0x3a, 0x3d, 0x41));
  dark.setColor(QPalette::AlternateBase, QColor(0x25, 0x27, 0x2a));
  dark.setColor(QPalette::ToolTipBase, window);
  dark.setColor(QPalette::ToolTipText, text);
  dark.setColor(QPalette::PlaceholderText, faint);
  dark.setColor(QPalette::Highlight, QColor(0x2f, 0x65, 0xa9));
  dark.setColor(QPalette::HighlightedText, Qt::white);
  dark.setColor(QPalette::Link, QColor(0x6c, 0xb0, 0xf5));
  dark.setColor(QPalette::LinkVisited, QColor(0xb3, 0x9d, 0xdb));
  for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
    dark.setColor(QPalette::Disabled, role, faint.darker(125));
  dark.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0x45, 0x49, 0x4e));
  return dark;
}

CColours::CColours(CSettings& settings)
    : m_settings(settings), m_choice(ChoiceOf(settings.Get(kColoursKey))) {}

void CColours::UseChosen(const CSettings& settings) {
  const int choice = ChoiceOf(settings.Get(kColoursKey));
  if (choice != 0) QApplication::setPalette(kChoices[choice].palette());
}

void CColours::AddTo(QMenu& menu) {
  QMenu* colours = menu.addMenu("C&olours");
  auto* group = new QActionGroup(colours);
  for (int i = 0; const CChoice& choice : kChoices) {
    QAction* action = group->addAction(choice.caption);
    action->setCheckable(true);
    action->setChecked(i == m_choice);
    QObject::connect(action, &QAction::triggered, colours, [this, i] { Choose(i); });
    ++i;
  }
  colours->addActions(group->actions());
}

void CColours::Choose(int choice) {
  m_choice = choice;
  m_settings.Set(kColoursKey, kChoices[choice].setting);
  QApplication::setPalette(kChoices[choice].palette());
}

}  // namespace vastra
