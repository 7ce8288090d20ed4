#include "vastra/views/var_selection_rules.h"

#include <algorithm>

namespace vastra {

CVarChoice::CVarChoice(const CStringArray& available, const CStringArray& chosen)
    : m_available(available), m_chosen(chosen) {
  for (const CString& name : available) m_used.push_back(FindIn(chosen, name) >= 0 ? 1 : 0);
}

CStringArray CVarChoice::Unused() const {
  CStringArray unused;
  for (int i = 0; i < m_available.GetSize(); ++i)
    if (!m_used[static_cast<std::size_t>(i)]) unused.Add(m_available[i]);
  return unused;
}

void CVarChoice::Choose(const std::vector<int>& places) {
  for (int i = 0, place = 0; i < m_available.GetSize(); ++i) {
    char& used = m_used[static_cast<std::size_t>(i)];
    if (used || std::find(places.begin(), places.end(), place++) == places.end()) continue;
    used = 1;
    m_chosen.Add(m_available[i]);
  }
}

void CVarChoice::TakeOut(int place) {
  CStringArray rest;
  for (int i = 0; i < m_chosen.GetSize(); ++i) {
    if (i != place) {
      rest.Add(m_chosen[i]);
      continue;
    }
    for (int k = 0; k < m_available.GetSize(); ++k) {
      char& used = m_used[static_cast<std::size_t>(k)];
      if (!used || !(m_available[k] == m_chosen[i])) continue;
      used = 0;
      break;
    }
  }
  m_chosen = rest;
}

void CVarChoice::ChooseAll() {
  m_chosen.Append(Unused());
  std::fill(m_used.begin(), m_used.end(), char{1});
}

void CVarChoice::TakeOutAll() {
  m_chosen.RemoveAll();
  std::fill(m_used.begin(), m_used.end(), char{0});
}

}  // namespace vastra
