#include "vastra/core/name_config.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CNameConfig, CLinkConfig)

}  // namespace vastra
