#include "endpoint.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "drivers/common/text.h"

namespace modbus {
namespace {

constexpr std::string_view kStandardPort = "502";
constexpr int kLastPort = 65535;

// The rates of serial lines; the library uses 9600 for any other.
constexpr int kBauds[] = {110,   300,    600,    1200,   2400,   4800,   9600,   19200,  38400,
                          57600, 115200, 230400, 460800, 500000, 576000, 921600, 1000000};

// All of text as a number; -1 if it is not one.
int ToNumber(std::string_view text) {
  int number = -1;
  const auto [rest, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  return fault == std::errc() && rest == text.data() + text.size() ? number : -1;
}

std::string Quoted(std::string_view text) { return '"' + driver::Shown(text) + '"'; }

std::string ReadLineSettings(std::string_view text, CEndpoint& endpoint) {
  std::array<std::string_view, 4> parts;
  std::size_t count = 0;
  for (std::size_t start = 0, comma = 0; comma != std::string_view::npos; start = comma + 1, ++count) {
    comma = text.find(',', start);
    if (count < parts.size()) parts[count] = driver::Trimmed(text.substr(start, comma - start));
  }
  if (count != parts.size()) return Quoted(text) + " is not baud,bits,parity,stop, such as 19200,8,E,1";
  endpoint.baud = ToNumber(parts[0]);
  if (std::ranges::find(kBauds, endpoint.baud) == std::end(kBauds))
    return Quoted(parts[0]) + " is not a rate of a serial line, such as 9600 or 19200";
  if (parts[1] != "8") return Quoted(parts[1]) + " data bits: this protocol needs 8, as in 19200,8,E,1";
  endpoint.parity = parts[2].size() == 1 ? static_cast<char>(parts[2][0] & ~0x20) : '?';
  if (std::string_view("NEO").find(endpoint.parity) == std::string_view::npos)
    return Quoted(parts[2]) + " is not a parity: N (none), E (even) or O (odd)";
  endpoint.stop = ToNumber(parts[3]);
  if (endpoint.stop != 1 && endpoint.stop != 2) return Quoted(parts[3]) + " stop bits: 1 or 2";
  return {};
}

// A path may have colons of its own: the settings of the line follow the last one.
std::string ReadSerial(std::string_view text, CEndpoint& endpoint) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos)
    return Quoted(text) + " lacks a colon and the settings of the line, such as /dev/ttyUSB0:19200,8,E,1";
  endpoint.device = driver::Trimmed(text.substr(0, colon));
  endpoint.name = endpoint.device;
  return ReadLineSettings(text.substr(colon + 1), endpoint);
}

std::string ReadTcp(std::string_view text, CEndpoint& endpoint) {
  std::string_view host = text, port = kStandardPort;
  const std::size_t colon = text.rfind(':');
  if (text.front() == '[') {
    const std::size_t end = text.find(']');
    const std::string_view rest = end == std::string_view::npos ? text : text.substr(end + 1);
    if (!rest.empty() && rest.front() != ':')
      return Quoted(text) + " is not an address in brackets, such as [fe80::1]:502";
    host = text.substr(1, end - 1);
    if (!rest.empty()) port = rest.substr(1);
  } else if (colon != std::string_view::npos && text.find(':') == colon) {  // more of them: a bare v6 address
    host = text.substr(0, colon);
    port = text.substr(colon + 1);
  }
  endpoint.host = driver::Trimmed(host);
  if (endpoint.host.empty()) return Quoted(text) + " has no host";
  if (endpoint.host.find_first_of(" \t\r\n,;/") != std::string::npos)
    return Quoted(text) + " is not a host with a port, such as 192.168.0.10:502";
  if (port.find(',') != std::string_view::npos)
    return Quoted(text) +
           " is not host:port; a serial line begins with a slash, such as /dev/ttyUSB0:19200,8,E,1";
  const int number = ToNumber(driver::Trimmed(port));
  if (number < 1 || number > kLastPort) return Quoted(port) + " is not a port: 1 to 65535";
  endpoint.port = std::to_string(number);
  endpoint.name = endpoint.host.find(':') == std::string::npos ? endpoint.host + ":" + endpoint.port
                                                               : "[" + endpoint.host + "]:" + endpoint.port;
  return {};
}

}  // namespace

std::string ReadEndpoint(std::string_view text, CEndpoint& endpoint) {
  text = driver::Trimmed(text);
  if (text.empty())
    return "it is empty: the device is host:port, or /dev/ttyUSB0:19200,8,E,1 on a serial line";
  return text.front() == '/' ? ReadSerial(text, endpoint) : ReadTcp(text, endpoint);
}

}  // namespace modbus
