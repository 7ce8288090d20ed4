// CTypedPtrMap: from small numbers to pointers of one class.
#pragma once

#include <map>

#include "vastra/platform/api.h"

namespace vastra {

struct CMapWordToPtr;  // names the map of plain pointers

// Base names the map of plain pointers that it takes the place of. Walking it goes by rising keys.
template <class Base, class KEY, class VALUE>
class CTypedPtrMap {
 public:
  bool IsEmpty() const { return m_items.empty(); }
  bool Lookup(KEY key, VALUE& value) const {
    const auto found = m_items.find(key);
    if (found == m_items.end()) return false;
    value = found->second;
    return true;
  }
  void SetAt(KEY key, VALUE value) { m_items[key] = value; }
  bool RemoveKey(KEY key) { return m_items.erase(key) != 0; }

  auto begin() const { return m_items.begin(); }
  auto end() const { return m_items.end(); }

 private:
  std::map<KEY, VALUE> m_items;
};

}  // namespace vastra
