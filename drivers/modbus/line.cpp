#include "line.h"

#include <filesystem>
#include <map>
#include <mutex>

#include "endpoint.h"
#include "serial_line.h"
#include "tcp_line.h"

namespace modbus {
namespace {

std::mutex g_linesLock;
std::map<std::string, std::weak_ptr<CSerialLine>> g_lines;  // by device, those in use

// The same for all names of a device.
std::string KeyOf(const std::string& device) {
  std::error_code unknown;  // a missing device keeps the name as typed
  const std::filesystem::path path = std::filesystem::canonical(device, unknown);
  return unknown ? device : path.string();
}

std::shared_ptr<CLine> SerialLine(const CEndpoint& endpoint, std::string& fault) {
  const std::lock_guard guard(g_linesLock);
  std::erase_if(g_lines, [](const auto& entry) { return entry.second.expired(); });
  std::weak_ptr<CSerialLine>& known = g_lines[KeyOf(endpoint.device)];
  std::shared_ptr<CSerialLine> line = known.lock();
  if (!line) known = line = std::make_shared<CSerialLine>(endpoint);
  if (line->Endpoint().HasSameSettings(endpoint)) return line;
  fault = "text1: another node uses " + endpoint.device + " with other settings of the line";
  return nullptr;
}

}  // namespace

std::string LineName(const DriverRecord& record) {
  CEndpoint endpoint;
  const std::string fault = ReadEndpoint(record.text1 ? record.text1 : "", endpoint);
  return fault.empty() && endpoint.IsSerial() ? KeyOf(endpoint.device) : std::string();
}

std::shared_ptr<CLine> NewLine(const CSettings& settings, std::string& fault) {
  const CEndpoint& endpoint = settings.endpoint;
  if (endpoint.IsSerial()) return SerialLine(endpoint, fault);
  return std::make_shared<CTcpLine>(endpoint.host, endpoint.port);
}

}  // namespace modbus
