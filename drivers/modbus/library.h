// The calls of the Modbus library that both kinds of line use.
#pragma once

#include <modbus/modbus.h>

#include <memory>
#include <string>

#include "line.h"
#include "packet.h"

namespace modbus {

struct CFreeContext {
  void operator()(modbus_t* context) const { modbus_free(context); }
};
using CContext = std::unique_ptr<modbus_t, CFreeContext>;

// Throws std::bad_alloc for no context.
CContext Take(modbus_t* context);
// The library waits with select, which only accepts small file handles.
bool IsWaitable(int file);
// Waits for one of events, of poll, or until file is lost: those that came. 0 if `until` comes first.
short WaitFor(int file, short events, CTime until);
// Receives the packet whose first bytes are there, until `until` at most. A good result of size 0: the
// packet was for another unit.
CResult Receive(modbus_t* context, CTime until, CPacket& packet);
CResult Lost(const std::string& words);
CResult Pending(const std::string& words);
// The system's text for an error number.
std::string SystemWords(int error);
CResult BadFrame(const std::string& words);
CResult NoReply(const CSettings& settings);

}  // namespace modbus
