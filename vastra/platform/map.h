// CTypedPtrMap: maps small numbers to pointers to one class.
#pragma once

#include <map>

#include "vastra/platform/api.h"

namespace vastra {

struct CMapWordToPtr;  // the map of untyped pointers

// Base is the map of untyped pointers that it replaces. Iterating visits the keys in rising order.
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
