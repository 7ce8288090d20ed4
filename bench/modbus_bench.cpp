// A scan of a Modbus device: 500 values scattered over its registers, from a server on loopback. The planned
// requests compared with one request for each value, and the driver's whole scan compared with the bare calls
// of libmodbus for the same requests.
#include <modbus/modbus.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "bench/ratios.h"
#include "drivers/modbus/connection.h"

namespace vastra::bench {
namespace {

constexpr int kValues = 500;
constexpr int kRegisters = 8000;

// About one in sixteen registers, in runs and alone, of both tables and of several types.
std::string ScatteredValues() {
  constexpr const char* kTypes[] = {"u16", "i16", "f32", "u32 cdab"};
  std::string list;
  unsigned state = 1;
  for (int i = 0, address = 0; i < kValues; ++i) {
    state = state * 1103515245u + 12345u;
    const unsigned random = state >> 16;
    address += random % 4 == 0 ? static_cast<int>(random / 4 % 40) : 2;
    list += std::string(i ? "," : "") + (i < kValues / 2 ? "h" : "i") + std::to_string(address) + ":" +
            kTypes[random / 256 % 4];
    if (i == kValues / 2) address = 0;
  }
  return list;
}

// A server for one connection at a time.
class CServer {
 public:
  CServer()
      : m_context(modbus_new_tcp("127.0.0.1", 0)),
        m_registers(modbus_mapping_new(0, 0, kRegisters, kRegisters)),
        m_listener(modbus_tcp_listen(m_context, 8)),
        m_thread([this] { Serve(); }) {}
  CServer(const CServer&) = delete;
  CServer& operator=(const CServer&) = delete;
  ~CServer() {
    ::shutdown(m_listener, SHUT_RDWR);
    m_thread.join();
    ::close(m_listener);
    modbus_mapping_free(m_registers);
    modbus_free(m_context);
  }
  int Port() const {
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
  }

 private:
  void Serve() {
    std::uint8_t request[MODBUS_TCP_MAX_ADU_LENGTH];
    for (int listener = m_listener; modbus_tcp_accept(m_context, &listener) >= 0; modbus_close(m_context))
      for (int size = 0; (size = modbus_receive(m_context, request)) >= 0;)
        modbus_reply(m_context, request, size, m_registers);
  }

  modbus_t* m_context;
  modbus_mapping_t* m_registers;
  int m_listener;
  std::thread m_thread;
};

modbus::CSettings Settings(const CServer& server, int workarounds) {
  const std::string place = "127.0.0.1:" + std::to_string(server.Port()), list = ScatteredValues();
  DriverRecord record = {};
  record.text1 = place.c_str();
  record.text2 = list.c_str();
  record.station = 1;
  record.variableCount = kValues;
  record.value4 = workarounds;
  modbus::CSettings settings;
  if (const std::string fault = modbus::ReadSettings(record, false, settings); !fault.empty())
    std::printf("%s\n", fault.c_str());
  return settings;
}

void Driver(benchmark::State& state, int workarounds) {
  const CServer server;
  const modbus::CSettings settings = Settings(server, workarounds);
  std::string fault;
  modbus::CConnection connection(settings, modbus::NewLine(settings, fault));
  std::vector<float> values(kValues);
  for (auto _ : state)
    if (connection.Read(values.data(), kValues) != statusOk) {
      state.SkipWithError(connection.LastError());
      break;
    }
}

void Library(benchmark::State& state) {
  const CServer server;
  const modbus::CSettings settings = Settings(server, 0);
  modbus_t* context = modbus_new_tcp("127.0.0.1", server.Port());
  modbus_set_slave(context, 1);
  bool good = modbus_connect(context) == 0;
  std::uint16_t registers[MODBUS_MAX_READ_REGISTERS];
  for (auto _ : state)
    for (const modbus::CRequest& request : settings.requests) {
      const auto read = request.kind->letter == 'h' ? modbus_read_registers : modbus_read_input_registers;
      good &= read(context, request.first, request.count, registers) == request.count;
    }
  if (!good) state.SkipWithError("a read failed");
  modbus_close(context);
  modbus_free(context);
}

BENCHMARK_CAPTURE(Driver, planned, 0)->Unit(benchmark::kMicrosecond)->UseRealTime()->MinTime(0.3);
BENCHMARK_CAPTURE(Driver, single, modbus::kSingleRequests)
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime()
    ->MinTime(0.3);
BENCHMARK(Library)->Unit(benchmark::kMicrosecond)->UseRealTime()->MinTime(0.3);

void PrintRequests() {
  const CServer server;
  const std::size_t planned = Settings(server, 0).requests.size();
  std::printf("%-64s %7zu     (goal: below the %zu of one a value)%s\n",
              "requests in a scan of 500 scattered values", planned,
              Settings(server, modbus::kSingleRequests).requests.size(),
              planned < kValues ? "" : "   MISSED");
}

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  using namespace vastra::bench;
  const int result = RunWithGoals(argc, argv,
                                  {{"Modbus scan, planned: speed to that of one request a value",
                                    {"Driver/planned/min_time:0.300/real_time"},
                                    {"Driver/single/min_time:0.300/real_time"},
                                    5,
                                    true},
                                   {"Modbus scan: time to that of the bare calls for the same requests",
                                    {"Driver/planned/min_time:0.300/real_time"},
                                    {"Library/min_time:0.300/real_time"},
                                    1.1,
                                    false}});
  if (result == 0) PrintRequests();
  return result;
}
