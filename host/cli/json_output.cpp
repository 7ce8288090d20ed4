#include "host/cli/json_output.h"

#include "host/cli/output.h"

namespace vastra {

EExit PrintJson(const CJson& json) { return PrintData(JsonLine(json)); }

}  // namespace vastra
