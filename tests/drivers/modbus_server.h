// A device on TCP or a pseudo-terminal. Its replies are those of the library; a fault spoils one.
#pragma once

#include <arpa/inet.h>
#include <modbus/modbus.h>
#include <poll.h>
#include <pty.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vastra {

using CBytes = std::vector<std::uint8_t>;

struct CReplyFault {
  enum EEnd { stays, closes, resets };
  std::function<void(CBytes& reply)> spoil = {};
  EEnd end = stays;              // of the connection, after the reply
  int delay = 0;                 // milliseconds
  int drips = 0;                 // milliseconds before each piece of the reply
  std::size_t piece = SIZE_MAX;  // its bytes
  int exception = 0;             // of the library, in place of the reply
};

class CModbusServer {
 public:
  // With a port of its own, or on a line whose device the path leads to.
  explicit CModbusServer(std::vector<int> units = {1}, std::string path = {})
      : m_path(std::move(path)),
        m_context(
            IsSerial() ? modbus_new_rtu("/dev/null", 9600, 'N', 8, 1) : modbus_new_tcp("127.0.0.1", 502),
            modbus_free) {
    ::socketpair(AF_UNIX, SOCK_STREAM, 0, m_mirror);
    modbus_set_socket(m_context.get(), m_mirror[0]);
    for (const int unit : units)
      m_units[unit].reset(modbus_mapping_new(kAll, kAll, kAll, kAll), modbus_mapping_free);
    if (!IsSerial()) Bind();
    Start();
  }
  ~CModbusServer() {
    if (m_thread.joinable()) Stop();
    for (const int file : {m_wake, m_mirror[0], m_mirror[1], m_listener}) ::close(file);
  }

  std::string Name() const { return IsSerial() ? m_path : "127.0.0.1:" + std::to_string(m_port); }

  void Start() {
    IsSerial() ? OpenLine() : static_cast<void>(::listen(m_listener, 16));
    Resume();
  }
  void Stop() {
    Halt();
    EndAll(false);
    ::shutdown(m_listener, SHUT_RDWR);  // nobody listens, and the port is kept
    if (IsSerial()) ::close(m_slave), ::unlink(m_path.c_str());
  }
  void Halt() {
    ::eventfd_write(m_wake, 1);
    m_thread.join();
  }
  void Resume() { m_thread = std::thread(&CModbusServer::Run, this); }
  void Drop(bool resets) {
    Halt();
    EndAll(resets);
    Resume();
  }

  // The registers or bits of a kind (c, d, h, i) from first on.
  void Put(char kind, int first, const std::vector<std::uint16_t>& values, int unit = 1) {
    const std::lock_guard guard(m_lock);
    const modbus_mapping_t& all = *m_units.at(unit);
    if (kind == 'c' || kind == 'd')
      std::ranges::copy(values, (kind == 'c' ? all.tab_bits : all.tab_input_bits) + first);
    else
      std::ranges::copy(values, (kind == 'h' ? all.tab_registers : all.tab_input_registers) + first);
  }
  // The next reply of those that are not to be spoilt yet.
  void Spoil(CReplyFault fault) {
    const std::lock_guard guard(m_lock);
    m_faults.push_back(std::move(fault));
  }
  // The requests since the last call, "3 100+2, " each: function, address, count.
  std::string TakeLog() {
    const std::lock_guard guard(m_lock);
    return std::exchange(m_log, {});
  }
  int Connections() const { return m_connections; }

 private:
  static constexpr int kAll = 65536;  // addresses

  bool IsSerial() const { return !m_path.empty(); }
  static void Sleep(int time) { std::this_thread::sleep_for(std::chrono::milliseconds(time)); }

  // A port that the system has chosen is lost when nobody listens. So the second round asks for the same.
  void Bind() {
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof place;
    for (const int again : {0, 1}) {
      if (again) ::close(m_listener);
      m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
      ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &again, sizeof again);
      ::bind(m_listener, reinterpret_cast<sockaddr*>(&place), size);
      ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&place), &size);
    }
    m_port = ntohs(place.sin_port);
  }
  // The far side is kept open: a line without a client is there, too.
  void OpenLine() {
    int master = -1;
    char name[64] = "";
    termios raw = {};
    ::cfmakeraw(&raw);
    ::openpty(&master, &m_slave, name, &raw, nullptr);
    std::filesystem::create_symlink(name, m_path);
    m_clients[master];
  }

  void Run() {
    for (;;) {
      std::vector<pollfd> files = {{m_wake, POLLIN, 0}, {m_listener, POLLIN, 0}};
      for (const auto& [client, received] : m_clients) files.push_back({client, POLLIN, 0});
      ::poll(files.data(), files.size(), -1);
      eventfd_t halts;
      if (files[0].revents && ::eventfd_read(m_wake, &halts) == 0) return;
      for (std::size_t i = 2; i < files.size(); ++i)
        if (files[i].revents) Receive(files[i].fd);
      if (files[1].revents) m_clients[::accept(m_listener, nullptr, nullptr)], ++m_connections;
    }
  }
  // No request is sent before the reply to the last one is there, or its connection has ended.
  void Receive(int client) {
    CBytes& request = m_clients[client];
    std::uint8_t bytes[512];
    const ssize_t size = ::read(client, bytes, sizeof bytes);
    if (size <= 0) return End(client, false);
    request.insert(request.end(), bytes, bytes + size);
    if (request.size() < 8) return;
    const int serial = request[1] > 6 ? 9 + request[6] : 8, tcp = 6 + (request[4] << 8 | request[5]);
    if (std::ssize(request) >= (IsSerial() ? serial : tcp)) Answer(client, std::exchange(request, {}));
  }

  void Answer(int client, const CBytes& request) {
    const std::lock_guard guard(m_lock);
    const auto* frame = request.data() + modbus_get_header_length(m_context.get());
    const bool isSingle = frame[0] == 5 || frame[0] == 6;
    m_log += std::to_string(frame[0]) + " " + std::to_string(frame[1] << 8 | frame[2]) + "+" +
             std::to_string(isSingle ? 1 : frame[3] << 8 | frame[4]) + ", ";
    const CReplyFault fault = m_faults.empty() ? CReplyFault() : m_faults.front();
    if (!m_faults.empty()) m_faults.pop_front();
    CBytes reply = RightReply(request, fault.exception);
    if (fault.spoil) fault.spoil(reply);
    Sleep(fault.delay);
    Send(client, reply, fault);
    if (fault.end != CReplyFault::stays) End(client, fault.end == CReplyFault::resets);
  }
  CBytes RightReply(const CBytes& request, int exception) {
    const auto unit = m_units.find(request[IsSerial() ? 0 : 6]);
    const bool isThere = unit != m_units.end();
    if (!isThere && IsSerial()) return {};
    if (!isThere) exception = MODBUS_EXCEPTION_GATEWAY_TARGET;
    if (exception)
      modbus_reply_exception(m_context.get(), request.data(), static_cast<unsigned>(exception));
    else
      modbus_reply(m_context.get(), request.data(), static_cast<int>(request.size()), unit->second.get());
    CBytes reply(MODBUS_MAX_ADU_LENGTH);
    reply.resize(static_cast<std::size_t>(::recv(m_mirror[1], reply.data(), reply.size(), 0)));
    return reply;
  }
  void Send(int client, std::span<const std::uint8_t> reply, const CReplyFault& fault) const {
    while (!reply.empty()) {
      Sleep(fault.drips);
      const std::size_t size = std::min(fault.piece, reply.size());
      const ssize_t sent =
          IsSerial() ? ::write(client, reply.data(), size) : ::send(client, reply.data(), size, MSG_NOSIGNAL);
      if (sent < 0) return;
      reply = reply.subspan(size);
    }
  }
  void End(int client, bool resets) {
    const linger atOnce = {1, 0};
    if (resets) ::setsockopt(client, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    ::close(client);
    m_clients.erase(client);
  }
  void EndAll(bool reset) {
    while (!m_clients.empty()) End(m_clients.begin()->first, reset);
  }

  const std::string m_path;
  int m_port = 0, m_listener = -1, m_slave = -1;
  std::shared_ptr<modbus_t> m_context;
  int m_mirror[2];  // what the library sends into the first can be taken from the second
  const int m_wake = ::eventfd(0, 0);
  std::thread m_thread;
  std::map<int, CBytes> m_clients;  // by file, what has come of the next request; of the thread
  std::atomic<int> m_connections = 0;

  std::mutex m_lock;  // of the rest
  std::map<int, std::shared_ptr<modbus_mapping_t>> m_units;
  std::deque<CReplyFault> m_faults;
  std::string m_log;
};

}  // namespace vastra
