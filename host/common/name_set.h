// Names of variables for the checks: whether something gives a name, and which name was probably meant. Quick
// for ten thousand names.
#pragma once

#include <string_view>
#include <unordered_set>
#include <vector>

#include "vastra/platform/array.h"

namespace vastra {

// A name for a message: in quotation marks, cut if it is long.
CString Quoted(const CString& name);

// The arrays must exist as long as the set.
class CNameSet {
 public:
  CNameSet() = default;
  explicit CNameSet(const CStringArray& names) { Add(names); }
  void Add(const CStringArray& names) {
    for (const CString& name : names)
      if (m_names.insert(name.View()).second) m_ordered.push_back(&name);
  }
  bool Has(const CString& name) const { return m_names.count(name.View()) != 0; }
  const std::vector<const CString*>& Ordered() const { return m_ordered; }

 private:
  std::unordered_set<std::string_view> m_names;
  std::vector<const CString*> m_ordered;
};

// Finds the name that was probably meant: one that differs in letter case alone, or that has the fewest
// wrong, missing, extra or exchanged letters. Gives up after a number of comparisons.
class CNearestName {
 public:
  // Null if no name is near enough.
  const CString* Find(const CString& wrong, const CNameSet& names);

 private:
  int m_comparisonsLeft = 300'000;
};

// The message about a name that nothing gives. near: the name that was probably meant, or null.
CString NoVariable(const CString& name, const CString* near);

// The names that the statements assign, in order.
CStringArray AssignedNames(const CStringArray& equations);

}  // namespace vastra
