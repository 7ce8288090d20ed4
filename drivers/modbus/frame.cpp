#include "frame.h"

#include <algorithm>
#include <cmath>

namespace modbus {
namespace {

constexpr int kExceptionBit = 0x80;
constexpr int kOn = 0xFF00;   // of a single coil
constexpr int kEchoed = 5;    // bytes of a written frame that its reply repeats
constexpr int kLastRead = 4;  // functions up to this one read

int Word(const CFrame& frame, std::size_t at) { return frame.bytes[at] << 8 | frame.bytes[at + 1]; }

int DataBytes(bool ofRegisters, int count) { return ofRegisters ? 2 * count : (count + 7) / 8; }

// Functions 1 and 2 read bits, 3 and 4 registers.
int BytesAskedFor(const CFrame& request) { return DataBytes(request.Function() > 2, Word(request, 3)); }

bool PutBit(float number, int bit, std::uint8_t* data) {
  if (number != 0) data[bit / 8] = static_cast<std::uint8_t>(data[bit / 8] | 1 << bit % 8);
  return !std::isnan(number);
}

// The place whose value does not fit, or null.
const CPlace* PutValues(const CRequest& request, const float* values, std::uint8_t* data) {
  for (const CPlace& place : request.places) {
    const int offset = place.value.address - request.first;
    const bool fits = request.kind->isRegister
                          ? ToRegisters(place.value, values[place.index], data + std::ptrdiff_t{2} * offset)
                          : PutBit(values[place.index], offset, data);
    if (!fits) return &place;
  }
  return nullptr;
}

}  // namespace

CFrame ReadFrame(const CRequest& request) {
  CFrame frame;
  frame.Add(request.kind->read);
  frame.AddWord(request.first);
  frame.AddWord(request.count);
  return frame;
}

CFrame WriteFrame(const CRequest& request, const float* values, const CPlace*& misfit) {
  const int bytes = DataBytes(request.kind->isRegister, request.count);
  std::array<std::uint8_t, kMostBytes> data = {};
  misfit = PutValues(request, values, data.data());
  CFrame frame;
  if (misfit) return frame;
  frame.Add(request.count == 1 ? request.kind->write : request.kind->writes);
  frame.AddWord(request.first);
  if (request.count == 1) {
    frame.AddWord(request.kind->isRegister ? data[0] << 8 | data[1] : data[0] ? kOn : 0);
    return frame;
  }
  frame.AddWord(request.count);
  frame.Add(bytes);
  for (int i = 0; i < bytes; ++i) frame.Add(data[static_cast<std::size_t>(i)]);
  return frame;
}

const char* FaultOf(const CFrame& request, const CFrame& reply) {
  if (reply.size < 2) return "it is too short";
  if (reply.Function() == (request.Function() | kExceptionBit))
    return reply.size == 2 ? nullptr : "its length is wrong";
  if (reply.Function() != request.Function()) return "it has the function of another request";
  if (request.Function() <= kLastRead) {
    const int bytes = BytesAskedFor(request);
    return reply.bytes[1] == bytes && reply.size == 2 + bytes ? nullptr : "its length is wrong";
  }
  if (reply.size != kEchoed) return "its length is wrong";
  return std::equal(reply.bytes.data(), reply.bytes.data() + kEchoed, request.bytes.data())
             ? nullptr
             : "it does not repeat what was written";
}

int ExceptionOf(const CFrame& reply) { return reply.Function() & kExceptionBit ? reply.bytes[1] : -1; }

void TakeValues(const CRequest& request, const CFrame& reply, float* values) {
  const std::uint8_t* data = reply.bytes.data() + 2;
  for (const CPlace& place : request.places) {
    const int offset = place.value.address - request.first;
    values[place.index] = request.kind->isRegister
                              ? FromRegisters(place.value, data + std::ptrdiff_t{2} * offset)
                              : static_cast<float>(data[offset / 8] >> offset % 8 & 1);
  }
}

}  // namespace modbus
