// CColours: whether the windows are light or dark: as the system has them, or as the user has chosen.
#pragma once

#include "host/desktop/settings.h"

class QMenu;
class QPalette;

namespace vastra {

class CColours {
 public:
  explicit CColours(CSettings& settings);

  // Uses the choice that settings remember; before the first window is made, which has its colours from then
  // on.
  static void UseChosen(const CSettings& settings);
  // Adds the menu of the choices.
  void AddTo(QMenu& menu);

 private:
  void Choose(int choice);

  CSettings& m_settings;
  int m_choice;
};

// The palette of dark windows.
QPalette DarkPalette();

}  // namespace vastra
