// A device with the protocol of the library, by TCP or on a serial line that is a pseudo-terminal. Its right
// replies are the library's; a fault spoils one on its way.
#pragma once

#include <modbus/modbus.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vastra {

using CBytes = std::vector<std::uint8_t>;

// What becomes of one reply.
struct CReplyFault {
  enum EEnd { stays, closes, resets };
  std::function<void(CBytes& reply, const CBytes& former)> spoil;  // former: the right reply before
  EEnd end = stays;                                                // of the connection, behind the reply
  int delay = 0;                                                   // milliseconds
  int drips = 0;                                                   // milliseconds in front of each byte
  int exception = 0;                                               // of the library, in place of the reply
};

class CModbusServer {
 public:
  // With a port of its own, or on a line whose device the path leads to.
  explicit CModbusServer(std::vector<int> units = {1}, std::string path = {});
  CModbusServer(const CModbusServer&) = delete;
  CModbusServer& operator=(const CModbusServer&) = delete;
  ~CModbusServer();

  void Stop();
  void Start();  // again, at the same place
  std::string Name() const { return IsSerial() ? m_path : "127.0.0.1:" + std::to_string(m_port); }

  // The registers or bits of a kind (c, d, h, i) from first on.
  void Put(char kind, int first, const std::vector<std::uint16_t>& values, int unit = 1);
  std::vector<std::uint16_t> Get(char kind, int first, int count, int unit = 1);
  void Spoil(CReplyFault fault);  // the next reply of those that are not to be spoilt yet
  void SetDeaf(bool deaf);        // hangs: nothing is accepted, nothing received
  void Drop(bool resets);         // ends the connections, and waits until they are gone
  // The requests since the last call, "3 100+2, " each: function, address, count.
  std::string TakeLog();
  int Connections();

 private:
  struct CFree {
    void operator()(modbus_t* context) const { modbus_free(context); }
    void operator()(modbus_mapping_t* mapping) const { modbus_mapping_free(mapping); }
  };

  bool IsSerial() const { return !m_path.empty(); }
  int Bind();
  void Listen();
  void OpenLine();
  void Wake();
  void Run();
  void Accept();
  void Receive(int client);
  std::size_t Length(const CBytes& received) const;
  void Answer(int client, const CBytes& request);
  CBytes RightReply(const CBytes& request, int exception);
  void Send(int client, const CBytes& reply, int drips) const;
  void End(int client, bool resets);

  const std::string m_path;
  int m_port = 0;
  std::unique_ptr<modbus_t, CFree> m_context;
  int m_mirror[2];  // what the library sends into the first can be taken from the second
  int m_wake;
  std::thread m_thread;

  std::mutex m_lock;  // of the rest
  std::condition_variable m_gone;
  std::map<int, std::unique_ptr<modbus_mapping_t, CFree>> m_units;
  int m_listener = -1, m_keeper = -1, m_slave = -1;
  bool m_stops = false, m_isDeaf = false;
  std::map<int, CBytes> m_clients;  // by file, what has come of the next request
  std::deque<CReplyFault> m_faults;
  CBytes m_former;
  std::string m_log;
  int m_connections = 0;
};

}  // namespace vastra
