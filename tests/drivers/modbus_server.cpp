#include "tests/drivers/modbus_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace vastra {
namespace {

constexpr int kAll = 65536;  // addresses

int Check(int result, const char* what) {
  if (result < 0) throw std::runtime_error(what);
  return result;
}

void Sleep(int time) { std::this_thread::sleep_for(std::chrono::milliseconds(time)); }

void SetReset(int client) {
  const linger atOnce = {1, 0};
  ::setsockopt(client, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

}  // namespace

CModbusServer::CModbusServer(std::vector<int> units, std::string path)
    : m_path(std::move(path)),
      m_context(IsSerial() ? modbus_new_rtu("/dev/null", 9600, 'N', 8, 1) : modbus_new_tcp("127.0.0.1", 502)),
      m_wake(Check(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {
  Check(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_mirror), "socketpair");
  modbus_set_socket(m_context.get(), m_mirror[0]);
  modbus_set_response_timeout(m_context.get(), 0, 1);
  for (const int unit : units) m_units[unit].reset(modbus_mapping_new(kAll, kAll, kAll, kAll));
  Start();
}

CModbusServer::~CModbusServer() {
  Stop();
  for (const int file : {m_wake, m_mirror[0], m_mirror[1], m_keeper})
    if (file >= 0) ::close(file);
}

void CModbusServer::Start() {
  IsSerial() ? OpenLine() : Listen();
  m_stops = false;
  m_thread = std::thread([this] { Run(); });
}

int CModbusServer::Bind() {
  const int file = Check(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
  const int reuse = 1;
  ::setsockopt(file, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
  sockaddr_in place = {};
  place.sin_family = AF_INET;
  place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  place.sin_port = htons(static_cast<std::uint16_t>(m_port));
  socklen_t size = sizeof place;
  Check(::bind(file, reinterpret_cast<sockaddr*>(&place), size), "bind");
  ::getsockname(file, reinterpret_cast<sockaddr*>(&place), &size);
  m_port = ntohs(place.sin_port);
  return file;
}

// One socket more keeps the port while nobody listens.
void CModbusServer::Listen() {
  if (m_keeper < 0) m_keeper = Bind();
  m_listener = Bind();
  Check(::listen(m_listener, 16), "listen");
}

// Its own handle on the far side keeps a line alive that no client has open.
void CModbusServer::OpenLine() {
  const int master = Check(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "posix_openpt");
  char name[64] = "";
  Check(::grantpt(master) | ::unlockpt(master) | -::ptsname_r(master, name, sizeof name), "ptsname_r");
  m_slave = Check(::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC), name);
  termios raw;
  ::tcgetattr(m_slave, &raw);
  ::cfmakeraw(&raw);
  ::tcsetattr(m_slave, TCSANOW, &raw);
  ::unlink(m_path.c_str());
  Check(::symlink(name, m_path.c_str()), "symlink");
  m_clients[master];
}

void CModbusServer::Stop() {
  if (!m_thread.joinable()) return;
  {
    const std::lock_guard guard(m_lock);
    m_stops = true;
  }
  Wake();
  m_thread.join();
  while (!m_clients.empty()) End(m_clients.begin()->first, false);
  for (int* file : {&m_listener, &m_slave})
    if (const int closing = std::exchange(*file, -1); closing >= 0) ::close(closing);
  if (IsSerial()) ::unlink(m_path.c_str());
}

void CModbusServer::Put(char kind, int first, const std::vector<std::uint16_t>& values, int unit) {
  const std::lock_guard guard(m_lock);
  const modbus_mapping_t& mapping = *m_units.at(unit);
  for (int at = first; const std::uint16_t value : values) {
    if (kind == 'c' || kind == 'd')
      (kind == 'c' ? mapping.tab_bits : mapping.tab_input_bits)[at++] = value != 0;
    else
      (kind == 'h' ? mapping.tab_registers : mapping.tab_input_registers)[at++] = value;
  }
}

std::vector<std::uint16_t> CModbusServer::Get(char kind, int first, int count, int unit) {
  const std::lock_guard guard(m_lock);
  const modbus_mapping_t& mapping = *m_units.at(unit);
  if (kind == 'h') return {mapping.tab_registers + first, mapping.tab_registers + first + count};
  return {mapping.tab_bits + first, mapping.tab_bits + first + count};
}

void CModbusServer::Spoil(CReplyFault fault) {
  const std::lock_guard guard(m_lock);
  m_faults.push_back(std::move(fault));
}

void CModbusServer::SetDeaf(bool deaf) {
  const std::lock_guard guard(m_lock);
  m_isDeaf = deaf;
  Wake();
}

void CModbusServer::Drop(bool resets) {
  std::unique_lock lock(m_lock);
  for (const auto& [client, received] : m_clients) {
    if (resets) SetReset(client);
    ::shutdown(client, resets ? SHUT_RD : SHUT_RDWR);
  }
  m_gone.wait(lock, [this] { return m_clients.empty(); });
}

std::string CModbusServer::TakeLog() {
  const std::lock_guard guard(m_lock);
  return std::exchange(m_log, {});
}

int CModbusServer::Connections() {
  const std::lock_guard guard(m_lock);
  return m_connections;
}

void CModbusServer::Wake() { ::eventfd_write(m_wake, 1); }

void CModbusServer::Run() {
  std::unique_lock lock(m_lock);
  while (!m_stops) {
    std::vector<pollfd> files = {{m_wake, POLLIN, 0}};
    if (!m_isDeaf) {
      if (m_listener >= 0) files.push_back({m_listener, POLLIN, 0});
      for (const auto& [client, received] : m_clients) files.push_back({client, POLLIN, 0});
    }
    lock.unlock();
    ::poll(files.data(), files.size(), -1);
    lock.lock();
    eventfd_t wakes;
    ::eventfd_read(m_wake, &wakes);
    for (std::size_t i = 1; i < files.size() && !m_isDeaf; ++i)
      if (files[i].revents) files[i].fd == m_listener ? Accept() : Receive(files[i].fd);
  }
}

void CModbusServer::Accept() {
  const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
  if (client < 0) return;
  m_clients[client];
  ++m_connections;
}

void CModbusServer::Receive(int client) {
  CBytes& received = m_clients[client];
  std::uint8_t bytes[512];
  const ssize_t size = ::read(client, bytes, sizeof bytes);
  if (size <= 0) return End(client, false);
  received.insert(received.end(), bytes, bytes + size);
  while (m_clients.contains(client) && received.size() >= Length(received)) {
    const auto end = received.begin() + static_cast<std::ptrdiff_t>(Length(received));
    const CBytes request(received.begin(), end);
    received.erase(received.begin(), end);
    Answer(client, request);
  }
}

// Of the request that begins so.
std::size_t CModbusServer::Length(const CBytes& received) const {
  if (!IsSerial()) return received.size() < 6 ? 6 : 6 + (received[4] << 8 | received[5]);
  const bool isLong = received.size() > 1 && received[1] > 6;
  return !isLong ? 8 : received.size() < 7 ? 9 : 9 + received[6];
}

void CModbusServer::Answer(int client, const CBytes& request) {
  const auto* frame = request.data() + modbus_get_header_length(m_context.get());
  const bool isSingle = frame[0] == 5 || frame[0] == 6;
  m_log += std::to_string(frame[0]) + " " + std::to_string(frame[1] << 8 | frame[2]) + "+" +
           std::to_string(isSingle ? 1 : frame[3] << 8 | frame[4]) + ", ";
  CReplyFault fault;
  if (!m_faults.empty()) {
    fault = std::move(m_faults.front());
    m_faults.pop_front();
  }
  CBytes reply = RightReply(request, fault.exception);
  const CBytes former = std::exchange(m_former, reply);
  if (fault.spoil) fault.spoil(reply, former);
  Sleep(fault.delay);
  Send(client, reply, fault.drips);
  if (fault.end != CReplyFault::stays) End(client, fault.end == CReplyFault::resets);
}

// A unit that is not there: silence on a line, an exception by the gateway else.
CBytes CModbusServer::RightReply(const CBytes& request, int exception) {
  const auto unit = m_units.find(request[IsSerial() ? 0 : 6]);
  const bool isThere = unit != m_units.end();
  if (!isThere && IsSerial()) return {};
  if (!isThere) exception = MODBUS_EXCEPTION_GATEWAY_TARGET;
  if (exception)
    modbus_reply_exception(m_context.get(), request.data(), static_cast<unsigned>(exception));
  else
    modbus_reply(m_context.get(), request.data(), static_cast<int>(request.size()), unit->second.get());
  CBytes reply(MODBUS_MAX_ADU_LENGTH);
  const ssize_t size = ::recv(m_mirror[1], reply.data(), reply.size(), MSG_DONTWAIT);
  reply.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return reply;
}

void CModbusServer::Send(int client, const CBytes& reply, int drips) const {
  const std::size_t step = drips ? 1 : std::max<std::size_t>(reply.size(), 1);
  for (std::size_t at = 0; at < reply.size(); at += step) {
    Sleep(drips);
    const ssize_t sent = IsSerial() ? ::write(client, reply.data() + at, step)
                                    : ::send(client, reply.data() + at, step, MSG_NOSIGNAL);
    if (sent < 0) return;
  }
}

void CModbusServer::End(int client, bool resets) {
  if (resets) SetReset(client);
  ::close(client);
  m_clients.erase(client);
  m_gone.notify_all();
}

}  // namespace vastra
