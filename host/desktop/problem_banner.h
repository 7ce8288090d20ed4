// The line above the plant that says what is wrong now: the most severe problem, and how many more there are.
#pragma once

#include <QFrame>

#include "host/desktop/plant_state.h"

class QLabel;
class QPushButton;

namespace vastra {

class CProblemBanner : public QFrame {
 public:
  // acknowledge is called with the identity of the problem that is shown when the user has seen it.
  CProblemBanner(std::function<void(const CString&)> acknowledge, QWidget* parent);
  // Hides the banner if there is no problem.
  void Show(const std::vector<CPlantProblem>& problems);

 private:
  const std::function<void(const CString&)> m_acknowledge;
  CString m_identity;  // of the problem that is shown
  QLabel *m_sign, *m_text;
  QPushButton* m_button;
};

}  // namespace vastra
