// A driver that throws from each function, from Open if the build says so.
#include <stdexcept>

#include "vastra/plc/driver_api.h"

namespace {

[[noreturn]] void Throw() { throw std::runtime_error("thrown by a driver"); }

int Open(DriverRecord, int, int* handle) {
  if (THROWS_IN_OPEN) Throw();
  *handle = 0;
  return statusOk;
}

constexpr DriverFunctions kFunctions = {
    .ShowConfig = [](int) -> int { Throw(); },
    .GetConfig = []() -> DriverRecord { Throw(); },
    .SetConfig = [](DriverRecord) { Throw(); },
    .Open = Open,
    .Read = [](float*, int, int) -> int { Throw(); },
    .Write = [](float*, int, int) -> int { throw 1; },
    .Close = [](int) { Throw(); },
    .spare = {},
    .GetExtendedError = [](int) -> const char* { Throw(); },
    .GetReplyError = [](int) -> const char* { Throw(); },
};

}  // namespace

DriverHeader GetDriverHeader() { return {9112 + THROWS_IN_OPEN * 100, "Throwing", &kFunctions}; }

int GetDriverApiVersion() { return DRIVER_API_VERSION; }

void SetDriverHost(const DriverHost*) { Throw(); }
