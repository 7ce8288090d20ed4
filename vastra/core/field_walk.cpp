#include "vastra/core/field_walk.h"

namespace vastra {

void CFieldWalk::Equations(const char* name, const char*, CStringArray& equations) { Field(name, equations); }

void CFieldWalk::SizeOf(const char* name, const char*, UINT& size) { Field(name, size); }

void CArchiveWalk::EnterList(const char*, UINT& number, std::size_t objectBytes) {
  if (IsLoading()) m_ar.CheckCount(number, objectBytes);
}

}  // namespace vastra
