#include "host/cli/json_output.h"

#include <cmath>

#include "host/cli/output.h"

namespace vastra {

CJson ToJson(double number) {
  if (std::isnan(number)) return "nan";
  if (std::isinf(number)) return number > 0 ? "inf" : "-inf";
  return number;
}

EExit PrintJson(const CJson& json) {
  return PrintData(json.dump(-1, ' ', false, CJson::error_handler_t::replace) + "\n");
}

}  // namespace vastra
