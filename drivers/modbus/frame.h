// The frames of the protocol, without what carries them: a function and its data. Formulas and limits are
// those of the Modbus application protocol, 1.1b3.
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

// Null if reply is one to request, a reply of an exception too; else what is wrong with it.
const char* FaultOf(const CFrame& request, const CFrame& reply);
// The code of the exception that a right reply has; -1: none.
int ExceptionOf(const CFrame& reply);
// Puts what a right reply to ReadFrame(request) has to the places of its values.
void TakeValues(const CRequest& request, const CFrame& reply, float* values);

}  // namespace modbus
