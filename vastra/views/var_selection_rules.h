// What the dialog of chosen variables does with its two lists, without a window.
#pragma once

#include <vector>

#include "vastra/platform/array.h"

namespace vastra {

class CVarChoice {
 public:
  CVarChoice() = default;
  // chosen may hold names that are not available: they stay chosen until they are taken out.
  CVarChoice(const CStringArray& available, const CStringArray& chosen);

  const CStringArray& Chosen() const { return m_chosen; }  // in the order of choosing
  CStringArray Unused() const;                             // in the order of the available ones

  // Both take places in Unused() and Chosen() respectively; one that is not there does nothing.
  void Choose(const std::vector<int>& places);  // in order
  void TakeOut(int place);
  void ChooseAll();
  void TakeOutAll();

 private:
  CStringArray m_available;
  CStringArray m_chosen;
  std::vector<char> m_used;  // of m_available: 1 if the name is chosen
};

}  // namespace vastra
