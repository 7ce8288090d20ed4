// CObject: the base of all classes with a run-time class. A link checks the class of its configuration with
// it, and AfxBeginThread creates a worker thread by its class.
#pragma once

#include "vastra/platform/api.h"

namespace vastra {

class CArchive;
class CObject;

// Describes one class: its name, its base (null for CObject) and its default factory (null if it has none).
struct VASTRA_API CRuntimeClass {
  const char* m_name;
  const CRuntimeClass* m_base;
  CObject* (*m_create)();

  // Returns a new object, which the caller owns; null if the class has no default factory.
  CObject* CreateObject() const { return m_create ? m_create() : nullptr; }
  bool IsDerivedFrom(const CRuntimeClass& base) const;
};

class VASTRA_API CObject {
 public:
  virtual const CRuntimeClass& GetRuntimeClass() const { return classCObject; }
  virtual ~CObject() = default;
  // Stores or loads the object, as the archive says. The base has nothing to store.
  virtual void Serialize(CArchive&) {}

  bool IsKindOf(const CRuntimeClass& base) const { return GetRuntimeClass().IsDerivedFrom(base); }

  static const CRuntimeClass classCObject;

 protected:
  CObject() = default;
  CObject(const CObject&) = default;
  CObject& operator=(const CObject&) = default;
};

// DECLARE_DYNAMIC goes into the class, IMPLEMENT_ into its source file. IMPLEMENT_DYNCREATE also defines a
// default factory.
#define DECLARE_DYNAMIC(Class)                       \
 public:                                             \
  static const ::vastra::CRuntimeClass class##Class; \
  const ::vastra::CRuntimeClass& GetRuntimeClass() const override { return class##Class; }
#define IMPLEMENT_DYNAMIC(Class, Base) \
  const ::vastra::CRuntimeClass Class::class##Class = {#Class, &Base::class##Base, nullptr};
#define IMPLEMENT_DYNCREATE(Class, Base)                                           \
  const ::vastra::CRuntimeClass Class::class##Class = {#Class, &Base::class##Base, \
                                                       []() -> ::vastra::CObject* { return new Class; }};

// The run-time class of a class that declares one.
#define RUNTIME_CLASS(Class) (Class::class##Class)

}  // namespace vastra
