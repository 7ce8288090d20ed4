#include "vastra/plc/driver_host.h"

#include <utility>

namespace vastra {
namespace {

const DriverHost* g_host = nullptr;

}  // namespace

const DriverHost* InstallDriverHost(const DriverHost* host) { return std::exchange(g_host, host); }

const DriverHost* InstalledDriverHost() { return g_host; }

}  // namespace vastra
