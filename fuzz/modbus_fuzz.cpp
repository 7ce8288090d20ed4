// Replies of a Modbus device: arbitrary bytes on a connection or a serial line as the reply to a request for
// values of each type; and arbitrary text as the settings of a node. The first byte selects.
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "drivers/modbus/library.h"

namespace modbus {
namespace {

using CBytes = std::span<const unsigned char>;

constexpr int kUnit = 17;
constexpr float kUntouched = -4711;

void Require(bool holds) {
  if (!holds) std::abort();
}

DriverRecord Record(const char* text1, const char* text2, int station, unsigned count) {
  DriverRecord record = {};
  record.text1 = text1;
  record.text2 = text2;
  record.station = station;
  record.variableCount = count;
  return record;
}

// A node with several values of each table.
const CSettings& Node() {
  static const CSettings settings = [] {
    CSettings read;
    const DriverRecord record =
        Record("/dev/none:9600,8,N,1",
               "h0 x 2, h2: f64 dcba, h6: f32, h10: i32 cdab, i0: u32 badc, c5 x 9, d0", kUnit, 16);
    Require(ReadSettings(record, false, read).empty());
    return read;
  }();
  return settings;
}

// A socket that supplies bytes and then the end of file.
class CStream {
 public:
  explicit CStream(CBytes bytes) {
    Require(::socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends) == 0);
    Require(::write(m_ends[1], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    ::shutdown(m_ends[1], SHUT_WR);
  }
  CStream(const CStream&) = delete;
  CStream& operator=(const CStream&) = delete;
  ~CStream() {
    ::close(m_ends[0]);
    ::close(m_ends[1]);
  }
  int End() const { return m_ends[0]; }

 private:
  int m_ends[2];
};

// A correct reply fills the values of its request and no others.
void TakeOver(const CRequest& request, const CFrame& request_, const CFrame& reply) {
  Require(reply.size >= 2 && reply.size <= kMostBytes);
  if (ExceptionOf(reply) >= 0) return;
  Require(reply.Function() == request_.Function());
  std::vector<float> values(static_cast<std::size_t>(Node().count), kUntouched);
  TakeValues(request, reply, values.data());
  for (const CPlace& place : request.places) values[static_cast<std::size_t>(place.index)] = kUntouched;
  for (const float value : values) Require(value == kUntouched);
}

void Reply(bool serial, const CRequest& request, CBytes bytes) {
  static const CContext tcp = Take(modbus_new_tcp("127.0.0.1", MODBUS_TCP_DEFAULT_PORT));
  static const CContext rtu = Take(modbus_new_rtu("/dev/none", 9600, 'N', 8, 1));
  modbus_t* context = serial ? rtu.get() : tcp.get();
  const CStream stream(bytes);
  modbus_set_socket(context, stream.End());
  modbus_set_slave(context, kUnit);
  CPacket packet;
  if (!Receive(context, CClock::now() + milliseconds(1000), packet).IsGood()) return;
  const CFrame asked = ReadFrame(request);
  CFrame reply;
  const std::string fault =
      serial ? TakeSerialReply(packet, asked, reply) : TakeTcpReply(packet, 1, kUnit, asked, reply);
  if (fault.empty()) TakeOver(request, asked, reply);
}

// Accepted settings can be planned and requested, each value once.
void Settings(CBytes bytes) {
  const std::string text(bytes.begin(), bytes.end());
  const std::size_t end = text.find('\n');
  const std::string text1 = text.substr(0, end),
                    text2 = end == std::string::npos ? "h0" : text.substr(end + 1);
  const DriverRecord record = Record(text1.c_str(), text2.c_str(), kUnit, 3);
  CSettings settings;
  for (const bool writes : {false, true}) {
    if (!ReadSettings(record, writes, settings).empty()) continue;
    Require(CheckSettings(record).empty());
    std::size_t places = 0;
    for (const CRequest& request : settings.requests) {
      places += request.places.size();
      Require(request.first >= 0 && request.count > 0 && request.first + request.count <= kLastAddress + 1);
      Require(ReadFrame(request).size == 5);
    }
    Require(places == 3);
  }
}

}  // namespace
}  // namespace modbus

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  using namespace modbus;
  if (size < 1 || size > 4096) return 0;
  const CBytes rest = CBytes(bytes, size).subspan(1);
  const std::vector<CRequest>& requests = Node().requests;
  if (bytes[0] == '\n')
    Settings(rest);
  else
    Reply(bytes[0] & 1, requests[bytes[0] / 2 % requests.size()], rest);
  return 0;
}
