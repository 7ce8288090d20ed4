#include "vastra/core/sample.h"

namespace vastra {

IMPLEMENT_DYNCREATE(CLogSample, CObject)

}  // namespace vastra
