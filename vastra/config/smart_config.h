// CSmartConfig: the settings of the smart stage, where the host's own logic reads and writes variables.
#pragma once

#include "vastra/core/field_walk.h"
#include "vastra/platform/object.h"

namespace vastra {

class VASTRA_API CSmartConfig : public CObject {
  DECLARE_DYNAMIC(CSmartConfig)
 public:
  using CObject::Serialize;
  void Serialize(CArchive& ar, UINT version);
  void Fields(CFieldWalk& walk);
  void TextSerialize(CArchive& ar);  // the report, to an archive that stores
  void Clear();

  CStringArray m_inputNames;  // stored and reported, but not used by the engine
  CStringArray m_outputVars;  // the host's logic writes them; they follow the values of each sample
  CStringArray m_equations;   // of the smart input, one statement per element
  CStringArray m_inputVars;   // the host's logic reads them
  CString m_equationText;     // the equations as the user typed them
};

}  // namespace vastra
