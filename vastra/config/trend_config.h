// CTrendConfig: the settings of the trending stage, which supplies the live views.
#pragma once

#include "vastra/core/field_walk.h"
#include "vastra/platform/object.h"

namespace vastra {

class VASTRA_API CTrendConfig : public CObject {
  DECLARE_DYNAMIC(CTrendConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  void TextSerialize(CArchive& ar);  // the report, to an archive that stores
  void Clear();

  CStringArray m_baseVars;   // the names of the values that the host writes to the stage
  CString m_equationText;    // the equations as the user typed them
  int m_calculateExtra = 0;  // 1: equations compute m_extraVars
  CStringArray m_equations;  // one statement per element
  CStringArray m_extraVars;
};

}  // namespace vastra
