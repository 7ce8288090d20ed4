// The place of a device, as text1 has it.
#pragma once

#include <string>
#include <string_view>

#include "settings.h"

namespace modbus {

// Reads `host`, `host:port`, `[v6 address]:port` or `/dev/tty...:baud,bits,parity,stop`. Returns an empty
// text, or the reason why text is not one of these.
std::string ReadEndpoint(std::string_view text, CEndpoint& endpoint);

}  // namespace modbus
