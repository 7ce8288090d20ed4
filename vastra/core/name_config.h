// CNameConfig: the configuration of CNamerLink and CMapperLink.
#pragma once

#include "vastra/core/link.h"

namespace vastra {

class VASTRA_API CNameConfig : public CLinkConfig {
  DECLARE_DYNAMIC(CNameConfig)
 public:
  CStringArray m_names;  // of the link's outer side, in value order
};

}  // namespace vastra
