// SingletonSmartPtr: owns the single object of a class and deletes it when the process ends.
#pragma once

namespace vastra {

template <class T>
class SingletonSmartPtr {
 public:
  SingletonSmartPtr() = default;
  SingletonSmartPtr(const SingletonSmartPtr&) = delete;
  SingletonSmartPtr& operator=(const SingletonSmartPtr&) = delete;
  ~SingletonSmartPtr() { delete m_object; }
  SingletonSmartPtr& operator=(T* object) { return m_object = object, *this; }
  operator T*() const { return m_object; }
  T* operator->() const { return m_object; }

 private:
  T* m_object = nullptr;
};

}  // namespace vastra
