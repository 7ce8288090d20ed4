// CArray: a growable array of values, and CStringArray.
#pragma once

#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

// ARG is the parameter type of an element. An index is from 0 to below GetSize().
template <class T, class ARG = const T&>
class CArray {
 public:
  int GetSize() const { return static_cast<int>(m_items.size()); }
  bool IsEmpty() const { return m_items.empty(); }
  // New elements are value-initialised: numbers are 0, strings are empty.
  void SetSize(int size) { m_items.resize(static_cast<std::size_t>(size)); }
  void RemoveAll() { m_items.clear(); }
  int Add(ARG item) {
    m_items.push_back(item);
    return GetSize() - 1;
  }
  void RemoveAt(int index) { m_items.erase(m_items.begin() + index); }
  void Append(const CArray& other) { m_items.insert(m_items.end(), other.begin(), other.end()); }

  const T& operator[](int index) const { return m_items[static_cast<std::size_t>(index)]; }
  T& operator[](int index) { return m_items[static_cast<std::size_t>(index)]; }
  const T* GetData() const { return m_items.data(); }
  T* GetData() { return m_items.data(); }

  auto begin() const { return m_items.begin(); }
  auto end() const { return m_items.end(); }
  auto begin() { return m_items.begin(); }
  auto end() { return m_items.end(); }

  friend bool operator==(const CArray& a, const CArray& b) { return a.m_items == b.m_items; }

 private:
  std::vector<T> m_items;
};

using CStringArray = CArray<CString>;
using CUIntArray = CArray<UINT, UINT>;

class CObject;
using CObArray = CArray<CObject*, CObject*>;

// An array of pointers to one class. Base is the array of untyped pointers that it replaces.
template <class Base, class T>
class CTypedPtrArray : public CArray<T, T> {};

// Index of the first element equal to text, byte for byte, or -1.
inline int FindIn(const CStringArray& array, const CString& text) {
  for (int i = 0; i < array.GetSize(); ++i)
    if (array[i] == text) return i;
  return -1;
}

}  // namespace vastra
