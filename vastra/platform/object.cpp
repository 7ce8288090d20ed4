#include "vastra/platform/object.h"

namespace vastra {

const CRuntimeClass CObject::classCObject = {"CObject", nullptr, nullptr};

bool CRuntimeClass::IsDerivedFrom(const CRuntimeClass& base) const {
  const CRuntimeClass* step = this;
  while (step && step != &base) step = step->m_base;
  return step != nullptr;
}

}  // namespace vastra
