#include "packet.h"

#include <algorithm>

namespace modbus {
namespace {

constexpr int kTcpHead = 7;
constexpr int kTcpCounted = 6;  // bytes before those that the length in the head counts
constexpr int kSerialHead = 1;
constexpr int kSerialTail = 2;

void Add(CPacket& packet, int byte) {
  packet.bytes[static_cast<std::size_t>(packet.size++)] = static_cast<std::uint8_t>(byte);
}

void Add(CPacket& packet, const CFrame& frame) {
  std::copy_n(frame.bytes.data(), frame.size, packet.bytes.data() + packet.size);
  packet.size += frame.size;
}

int Word(const CPacket& packet, std::size_t at) { return packet.bytes[at] << 8 | packet.bytes[at + 1]; }

std::string TakeFrame(const CPacket& packet, int head, int tail, const CFrame& request, CFrame& reply) {
  reply.size = std::min(packet.size - head - tail, kMostBytes);
  std::copy_n(packet.bytes.data() + head, reply.size, reply.bytes.data());
  const char* fault = FaultOf(request, reply);
  return fault ? fault : "";
}

}  // namespace

CPacket TcpPacket(int number, int unit, const CFrame& frame) {
  CPacket packet;
  for (const int word : {number, 0, frame.size + 1}) {
    Add(packet, word >> 8);
    Add(packet, word);
  }
  Add(packet, unit);
  Add(packet, frame);
  return packet;
}

CPacket SerialPacket(int unit, const CFrame& frame) {
  CPacket packet;
  Add(packet, unit);
  Add(packet, frame);
  return packet;
}

std::string TakeTcpReply(const CPacket& packet, int number, int unit, const CFrame& request, CFrame& reply) {
  if (packet.size <= kTcpHead) return "it is too short";
  if (Word(packet, 2) != 0) return "it is of another protocol";
  if (Word(packet, 0) != number) return "it belongs to another request";
  if (Word(packet, 4) != packet.size - kTcpCounted) return "its length is wrong";
  if (packet.bytes[6] != unit) return "it is from unit " + std::to_string(packet.bytes[6]);
  return TakeFrame(packet, kTcpHead, 0, request, reply);
}

std::string TakeSerialReply(const CPacket& packet, const CFrame& request, CFrame& reply) {
  if (packet.size <= kSerialHead + kSerialTail) return "it is too short";
  return TakeFrame(packet, kSerialHead, kSerialTail, request, reply);
}

}  // namespace modbus
