// CEnableConfig: the equations of an enable object. The output or summary that owns the object fills it from
// its own settings immediately before use, so no configuration file contains it.
#pragma once

#include "vastra/platform/archive.h"
#include "vastra/platform/object.h"

namespace vastra {

class VASTRA_API CEnableConfig : public CObject {
  DECLARE_DYNAMIC(CEnableConfig)
 public:
  void Serialize(CArchive& ar) override;
  void TextSerialize(CArchive& ar);  // the report, to an archive that stores

  CStringArray m_equations;  // one statement per element
};

}  // namespace vastra
