// CStack: the growable stack of the equation compiler and of the reference interpreter.
#pragma once

#include <vector>

namespace vastra {

template <class T>
class CStack {
 public:
  bool IsEmpty() const { return m_nCount == 0; }
  void RemoveAll() { m_nCount = 0; }
  void Push(T item) {
    const auto place = static_cast<std::size_t>(m_nCount++);
    if (place == m_items.size()) m_items.resize(2 * place);
    m_items[place] = item;
  }
  // Does not change item if the stack is empty.
  void Pop(T& item) {
    if (m_nCount > 0) item = m_items[static_cast<std::size_t>(--m_nCount)];
  }

 private:
  int m_nCount = 0;
  std::vector<T> m_items = std::vector<T>(50);
};

}  // namespace vastra
