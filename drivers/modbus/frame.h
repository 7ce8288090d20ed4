// The frames of the protocol, without the header of TCP or of a serial line: a function and its data.
// Formulas and limits are those of the Modbus application protocol, 1.1b3.
#pragma once

#include <array>
#include <cstdint>

#include "plan.h"

namespace modbus {

constexpr int kMostBytes = 253;  // of a frame

struct CFrame {
  int size = 0;
  std::array<std::uint8_t, kMostBytes> bytes;

  void Add(int byte) { bytes[static_cast<std::size_t>(size++)] = static_cast<std::uint8_t>(byte); }
  void AddWord(int word) {
    Add(word >> 8);
    Add(word);
  }
  int Function() const { return bytes[0]; }
};

CFrame ReadFrame(const CRequest& request);
// Empty if a value does not fit its type; misfit is then its place.
CFrame WriteFrame(const CRequest& request, const float* values, const CPlace*& misfit);

// Null if reply answers request, also by an exception; else the fault of the reply.
const char* FaultOf(const CFrame& request, const CFrame& reply);
// The code of the exception in a correct reply; -1: none.
int ExceptionOf(const CFrame& reply);
// Stores the values of a correct reply to ReadFrame(request).
void TakeValues(const CRequest& request, const CFrame& reply, float* values);

}  // namespace modbus
