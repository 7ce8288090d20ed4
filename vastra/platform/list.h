// CList: a doubly linked list. Its nodes are allocated in blocks in the order of adding, so that iterating
// costs no more than for an array. A POSITION identifies a node and is valid until that node is removed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

struct CListNode;             // never defined: a list casts its positions to its own nodes
using POSITION = CListNode*;  // null: no node

// ARG is the parameter type of an element. A list cannot be copied, because its positions belong to it.
template <class T, class ARG = const T&>
class CList {
  struct CNode {
    explicit CNode(ARG item) : value(item) {}
    CNode* next = nullptr;
    CNode* prev = nullptr;
    T value;
  };
  union CSlot {  // memory of one node; a free slot points to the next free slot
    CSlot* nextFree;
    alignas(CNode) std::byte room[sizeof(CNode)];
  };

 public:
  template <class V>
  class CIterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = V*;
    using reference = V&;

    CIterator() = default;
    explicit CIterator(CNode* node) : m_node(node) {}
    V& operator*() const { return m_node->value; }
    CIterator& operator++() { return m_node = m_node->next, *this; }
    CIterator operator++(int) { return CIterator(std::exchange(m_node, m_node->next)); }
    friend bool operator==(CIterator a, CIterator b) { return a.m_node == b.m_node; }

   private:
    CNode* m_node = nullptr;
  };

  CList() = default;
  CList(const CList&) = delete;
  CList& operator=(const CList&) = delete;
  ~CList() { RemoveAll(); }

  int GetCount() const { return m_count; }
  bool IsEmpty() const { return m_count == 0; }

  // The list must not be empty.
  const T& GetHead() const { return m_head->value; }
  T& GetHead() { return m_head->value; }
  const T& GetTail() const { return m_tail->value; }
  T& GetTail() { return m_tail->value; }

  POSITION AddHead(ARG item) { return Link(New(item), nullptr, m_head); }
  POSITION AddTail(ARG item) { return Link(New(item), m_tail, nullptr); }
  // Inserts before pos, or at the tail if pos is null.
  POSITION InsertBefore(POSITION pos, ARG item) {
    return pos ? Link(New(item), Node(pos)->prev, Node(pos)) : AddTail(item);
  }

  // Removes the head and returns it. The list must not be empty.
  T RemoveHead() {
    T item = std::move(m_head->value);
    RemoveAt(Pos(m_head));
    return item;
  }
  void RemoveAt(POSITION pos) {
    CNode* node = Node(pos);
    (node->prev ? node->prev->next : m_head) = node->next;
    (node->next ? node->next->prev : m_tail) = node->prev;
    node->~CNode();
    m_free = new (node) CSlot{m_free};
    --m_count;
  }
  // Removes all elements and frees their memory.
  void RemoveAll() {
    for (CNode* node = m_head; node;) std::exchange(node, node->next)->~CNode();
    m_blocks.clear();
    m_head = m_tail = nullptr;
    m_free = m_fresh = m_freshEnd = nullptr;
    m_count = 0;
  }

  // Exchanges the elements of both lists. Positions stay valid, in the other list.
  void Swap(CList& other) noexcept {
    std::swap(m_head, other.m_head);
    std::swap(m_tail, other.m_tail);
    std::swap(m_free, other.m_free);
    std::swap(m_fresh, other.m_fresh);
    std::swap(m_freshEnd, other.m_freshEnd);
    std::swap(m_count, other.m_count);
    m_blocks.swap(other.m_blocks);
  }

  POSITION GetHeadPosition() const { return Pos(m_head); }
  POSITION GetTailPosition() const { return Pos(m_tail); }
  const T& GetAt(POSITION pos) const { return Node(pos)->value; }
  T& GetAt(POSITION pos) { return Node(pos)->value; }
  // Returns the element at pos and moves pos to the next (previous) element, or to null if there is none.
  T& GetNext(POSITION& pos) {
    CNode* node = Node(pos);
    pos = Pos(node->next);
    return node->value;
  }
  const T& GetNext(POSITION& pos) const { return const_cast<CList*>(this)->GetNext(pos); }
  const T& GetPrev(POSITION& pos) const {
    const CNode* node = Node(pos);
    pos = Pos(node->prev);
    return node->value;
  }

  auto begin() { return CIterator<T>(m_head); }
  auto end() { return CIterator<T>(); }
  auto begin() const { return CIterator<const T>(m_head); }
  auto end() const { return CIterator<const T>(); }

 private:
  static CNode* Node(POSITION pos) { return reinterpret_cast<CNode*>(pos); }
  static POSITION Pos(CNode* node) { return reinterpret_cast<POSITION>(node); }

  CNode* New(ARG item) {
    CSlot* slot = m_free;
    if (slot) {
      m_free = slot->nextFree;
    } else {
      if (m_fresh == m_freshEnd) AddBlock();
      slot = m_fresh++;
    }
    return new (slot->room) CNode(item);
  }

  POSITION Link(CNode* node, CNode* prev, CNode* next) {
    node->prev = prev;
    node->next = next;
    (prev ? prev->next : m_head) = node;
    (next ? next->prev : m_tail) = node;
    ++m_count;
    return Pos(node);
  }

  void AddBlock() {
    const std::size_t size = std::clamp<std::size_t>(static_cast<std::size_t>(m_count), 8, 1024);
    m_blocks.push_back(std::make_unique<CSlot[]>(size));
    m_fresh = m_blocks.back().get();
    m_freshEnd = m_fresh + size;
  }

  CNode* m_head = nullptr;
  CNode* m_tail = nullptr;
  CSlot* m_free = nullptr;   // slots of removed nodes
  CSlot* m_fresh = nullptr;  // the unused rest of the newest block
  CSlot* m_freshEnd = nullptr;
  int m_count = 0;
  std::vector<std::unique_ptr<CSlot[]>> m_blocks;
};

// A list of strings. A copy has its own nodes.
class CStringList : public CList<CString> {
 public:
  CStringList() = default;
  CStringList(const CStringList& other) {
    for (const CString& text : other) AddTail(text);
  }
  CStringList(CStringList&& other) noexcept { Swap(other); }
  CStringList& operator=(CStringList other) noexcept { return Swap(other), *this; }
};

class CObject;
using CObList = CList<CObject*, CObject*>;

// A list of pointers to one class. Base is the list of untyped pointers that it replaces.
template <class Base, class T>
class CTypedPtrList : public CList<T, T> {};

// Removes all elements and deletes what they point to.
template <class T>
void DeleteAll(CList<T, T>& list) {
  while (!list.IsEmpty()) delete list.RemoveHead();
}

// A list that owns its objects: it deletes them, and a copy has copies of them. RemoveHead and RemoveAt pass
// the object to the caller, who then owns it.
template <class T>
class COwnedList : public CTypedPtrList<CObList, T*> {
 public:
  COwnedList() = default;
  COwnedList(const COwnedList& other) : CTypedPtrList<CObList, T*>() {
    for (const T* item : other) this->AddTail(new T(*item));
  }
  COwnedList(COwnedList&& other) noexcept { this->Swap(other); }
  COwnedList& operator=(COwnedList other) noexcept { return this->Swap(other), *this; }
  ~COwnedList() { RemoveAll(); }

  // Deletes all objects.
  void RemoveAll() { DeleteAll(*this); }
  // Deletes all objects and creates count new ones.
  void Renew(UINT count) {
    RemoveAll();
    for (; count != 0; --count) this->AddTail(new T);
  }
};

}  // namespace vastra
