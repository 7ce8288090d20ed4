// The rules for the two lists of the selection dialog, without a window.
#pragma once

#include <vector>

#include "vastra/platform/array.h"

namespace vastra {

class CVarChoice {
 public:
  CVarChoice() = default;
  // chosen can have names that are not available: they stay until they are removed.
  CVarChoice(const CStringArray& available, const CStringArray& chosen);

  const CStringArray& Chosen() const { return m_chosen; }  // in the order of choosing
  CStringArray Unused() const;                             // in the order of the available ones

  // places: indexes in Unused() and in Chosen(); invalid ones are ignored.
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
