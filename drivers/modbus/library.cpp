#include "library.h"

#include <poll.h>
#include <sys/select.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>

namespace modbus {
namespace {

using std::chrono::microseconds;

constexpr microseconds kShortest{1000};  // the library refuses a time-out of 0

void SetTimeOut(modbus_t* context, CTime until) {
  const auto left = std::max(kShortest, std::chrono::duration_cast<microseconds>(until - CClock::now()));
  const std::int64_t second = microseconds::period::den;
  modbus_set_response_timeout(context, static_cast<std::uint32_t>(left.count() / second),
                              static_cast<std::uint32_t>(left.count() % second));
}

}  // namespace

CContext Take(modbus_t* context) {
  if (!context) throw std::bad_alloc();
  modbus_set_byte_timeout(context, 0, 0);  // the time-out is for the whole reply, however it trickles in
  return CContext(context);
}

bool IsWaitable(int file) { return file < FD_SETSIZE; }

short WaitFor(int file, short events, CTime until) {
  for (;;) {
    const auto left = std::max(CClock::duration(0), until - CClock::now());
    const auto wait = static_cast<int>(std::chrono::ceil<milliseconds>(left).count());
    pollfd entry = {file, events, 0};
    const int ready = ::poll(&entry, 1, wait);
    if (ready > 0) return entry.revents;
    if (ready < 0 && errno != EINTR) return POLLERR;
    if (wait == 0) return 0;
  }
}

CResult Receive(modbus_t* context, CTime until, CPacket& packet) {
  SetTimeOut(context, until);
  packet.size = modbus_receive_confirmation(context, packet.bytes.data());
  if (packet.size >= 0) return {};
  packet.size = 0;
  const int error = errno;
  switch (error) {
    case ETIMEDOUT:
      return BadFrame("it is cut short");
    case EMBBADCRC:
      return BadFrame("its check sum is wrong");
    case EMBBADDATA:
      return BadFrame("its length is wrong");
    case ECONNRESET:
      return Lost("the device closed the connection");
    default:
      return Lost(SystemWords(error));
  }
}

CResult Lost(const std::string& words) { return {statusExtendedError, words}; }

CResult Pending(const std::string& words) { return {statusExtendedError, words, true}; }

std::string SystemWords(int error) { return std::generic_category().message(error); }

CResult BadFrame(const std::string& words) { return {statusInvalidFrame, "bad reply: " + words}; }

CResult NoReply(const CSettings& settings) {
  return {statusTimeout, "no reply within " + std::to_string(settings.timeOut.count()) + " ms"};
}

}  // namespace modbus
