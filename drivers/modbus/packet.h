// A frame with its envelope: by TCP a head with the number of the request, the length and the unit; on a
// serial line the unit and a check sum, which the library adds.
#pragma once

#include <modbus/modbus.h>

#include <array>
#include <string>

#include "frame.h"

namespace modbus {

struct CPacket {
  int size = 0;
  std::array<std::uint8_t, MODBUS_MAX_ADU_LENGTH> bytes;
};

CPacket TcpPacket(int number, int unit, const CFrame& frame);
CPacket SerialPacket(int unit, const CFrame& frame);  // without the check sum

// Extract the frame from a received packet. Return an empty text, or why it is not the reply to request,
// which had number and unit.
std::string TakeTcpReply(const CPacket& packet, int number, int unit, const CFrame& request, CFrame& reply);
std::string TakeSerialReply(const CPacket& packet, const CFrame& request, CFrame& reply);

}  // namespace modbus
