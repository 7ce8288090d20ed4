// A driver that throws from each function, from Open if the build says so.
#include <stdexcept>

#include "vastra/plc/driver_api.h"

namespace {

template <class Result, class... Arguments>
Result Throw(Arguments...) {
  throw std::runtime_error("thrown by a driver");
}

int Open(DriverRecord config, int mode, int* handle) {
  *handle = THROWS_IN_OPEN ? Throw<int>(config, mode) : 0;
  return statusOk;
}

int ThrowANumber(float*, int, int) { throw 1; }

constexpr DriverFunctions kFunctions = {Throw,        Throw, Throw, Open,  Throw,
                                        ThrowANumber, Throw, {},    Throw, Throw};

}  // namespace

DriverHeader GetDriverHeader() { return {9112 + THROWS_IN_OPEN * 100, "Throwing", &kFunctions}; }

int GetDriverApiVersion() { return DRIVER_API_VERSION; }

void SetDriverHost(const DriverHost*) { Throw<int>(); }

const char* CheckDriverConfig(DriverRecord) { return Throw<const char*>(); }

const char* GetDriverLine(DriverRecord) { return Throw<const char*>(); }
