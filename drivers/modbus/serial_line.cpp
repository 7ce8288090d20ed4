#include "serial_line.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace modbus {
namespace {

constexpr int kDataBits = 8;

// A reply on a serial line has no number, so a late one could be mistaken for the reply to the next request.
// Therefore the unit gets no request for a while after a time-out, and after noise, which a late reply may
// follow.
constexpr milliseconds kLate{500};
constexpr milliseconds kNoise{100};

// Three and a half characters, and never less than 1.75 ms.
CClock::duration SilenceOf(int baud) {
  using std::chrono::microseconds;
  constexpr int kBits = 11;  // of a character, with start, parity and stop
  return std::max(microseconds(1750), microseconds(3'500'000LL * kBits / baud));
}

CResult NotOpened(int error) {
  const char* hint = error == EACCES   ? " (is the user in the group dialout?)"
                     : error == ENOTTY ? " (is it a serial line?)"
                                       : "";
  return Lost("it cannot be opened: " + SystemWords(error) + hint);
}

}  // namespace

CSerialLine::CSerialLine(const CEndpoint& endpoint)
    : m_endpoint(endpoint),
      m_silence(SilenceOf(endpoint.baud)),
      m_context(Take(modbus_new_rtu(endpoint.device.c_str(), endpoint.baud, endpoint.parity, kDataBits,
                                    endpoint.stop))) {}

void CSerialLine::Close() {
  if (m_isOpen) modbus_close(m_context.get());
  m_isOpen = false;
}

void CSerialLine::Drop() {
  const std::lock_guard guard(m_lock);
  Close();
}

bool CSerialLine::IsConnected() {
  const std::lock_guard guard(m_lock);
  return m_isOpen;
}

CResult CSerialLine::Connect(const CSettings& settings, CTime, bool) {
  const std::lock_guard guard(m_lock);
  return Open(settings);
}

CResult CSerialLine::Open(const CSettings& settings) {
  if (m_isOpen) return {};
  if (modbus_connect(m_context.get()) != 0) return NotOpened(errno);
  m_isOpen = true;
  if (!IsWaitable(modbus_get_socket(m_context.get()))) {
    Close();
    return Lost("this program has too many files open");
  }
  m_quietUntil = CClock::now() + std::max<CClock::duration>(m_silence, settings.connectPause);
  return {};
}

CResult CSerialLine::Exchange(const CSettings& settings, const CFrame& request, CFrame& reply) {
  const std::lock_guard guard(m_lock);
  CResult result = Ask(settings, request, reply);
  if (result.status == statusExtendedError) Close();
  m_quietUntil = CClock::now() + m_silence;
  return result;
}

CResult CSerialLine::Ask(const CSettings& settings, const CFrame& request, CFrame& reply) {
  if (CResult opened = Open(settings); !opened.IsGood()) return opened;  // another node has closed it
  modbus_set_slave(m_context.get(), settings.unit);
  CTime& lateUntil = m_lateUntil[static_cast<std::size_t>(settings.unit)];
  AwaitLateReply(settings.unit, lateUntil);
  std::this_thread::sleep_until(m_quietUntil);
  modbus_flush(m_context.get());
  if (CResult sent = Send(settings.unit, request); !sent.IsGood()) return sent;
  const CTime deadline = CClock::now() + settings.timeOut;
  CResult result = TakeReply(settings, request, deadline, reply);
  const CTime now = CClock::now();
  lateUntil = result.IsGood() ? now : now < deadline ? std::min(deadline, now + kNoise) : now + kLate;
  return result;
}

bool CSerialLine::Hears(CTime until) const {
  return CClock::now() < until && WaitFor(modbus_get_socket(m_context.get()), POLLIN, until);
}

void CSerialLine::AwaitLateReply(int unit, CTime until) {
  while (Hears(until)) {
    CPacket packet;
    const CResult received = Receive(m_context.get(), until, packet);
    m_quietUntil = CClock::now() + m_silence;
    if (received.status == statusExtendedError || (packet.size > 0 && packet.bytes[0] == unit)) return;
  }
}

CResult CSerialLine::Send(int unit, const CFrame& request) {
  const CPacket packet = SerialPacket(unit, request);
  if (modbus_send_raw_request(m_context.get(), packet.bytes.data(), packet.size) >= 0) return {};
  return Lost(SystemWords(errno));
}

// Skips replies of other units: they may be late replies to other nodes.
CResult CSerialLine::TakeReply(const CSettings& settings, const CFrame& request, CTime deadline,
                               CFrame& reply) {
  CResult silence = NoReply(settings);
  while (Hears(deadline)) {
    CPacket packet;
    if (CResult received = Receive(m_context.get(), deadline, packet); !received.IsGood()) return received;
    silence = BadFrame("it is from another unit");
    if (packet.size == 0 || packet.bytes[0] != settings.unit) continue;
    const std::string fault = TakeSerialReply(packet, request, reply);
    return fault.empty() ? CResult() : BadFrame(fault);
  }
  return silence;
}

}  // namespace modbus
