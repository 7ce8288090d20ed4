#include "settings.h"

#include <algorithm>

#include "endpoint.h"

namespace modbus {
namespace {

// An attempt by TCP delays nobody else; one on a serial line occupies the line.
constexpr milliseconds kLongestPauseByTcp{5000};

// The numbers that have bounds.
constexpr struct {
  int DriverRecord::*value;
  const char* name;
  int high;  // the low one is 0
} kNumbers[] = {
    {&DriverRecord::station, "station", kLastUnit},
    {&DriverRecord::timeOut, "timeOut", kLongestTimeOut},
    {&DriverRecord::value1, "value1", kLongestPause},
    {&DriverRecord::value2, "value2", kLongestPause},
    {&DriverRecord::value3, "value3", kMostRegisters},
    {&DriverRecord::value4, "value4", kSingleRequests | kCloseAfterScan},
};

std::string CheckNumbers(const DriverRecord& record) {
  for (const auto& number : kNumbers)
    if (const int value = record.*number.value; value < 0 || value > number.high)
      return number.name + (": " + std::to_string(value)) + " is not from 0 to " +
             std::to_string(number.high);
  return {};
}

std::string CheckUnit(const CEndpoint& endpoint, int unit) {
  if (!endpoint.IsSerial() || (unit >= 1 && unit <= kLastSerialUnit)) return {};
  return "station: " + std::to_string(unit) + " is not a unit on a serial line: 1 to " +
         std::to_string(kLastSerialUnit);
}

// What is wrong with list as text2, with none for nothing.
std::string ReadList(const DriverRecord& record, std::vector<CEntry>& entries) {
  const std::string_view list = record.text2 ? record.text2 : "";
  if (list.find_first_not_of(" \t\r\n") == std::string_view::npos)
    return "text2: it is empty: the values are a list such as h0 x 10: f32, c5";
  const std::string fault = ReadEntries(list, record.registerAddress, entries);
  return fault.empty() ? fault : "text2: " + fault;
}

int MostRegisters(const DriverRecord& record) { return record.value3 ? record.value3 : kMostRegisters; }

// Whether each value fits a request, and can be written if that is wanted.
std::string CheckEntries(const std::vector<CEntry>& entries, int most, bool writes) {
  for (const CEntry& entry : entries) {
    const CValue& value = entry.first;
    if (writes && !value.kind->write)
      return "text2: a node that is written has coils and holding registers alone, and " +
             NameOf(*value.kind, value.address, 1) + " is none";
    if (value.kind->isRegister && SizeOf(value.type) > most)
      return "value3: " + std::to_string(most) + " registers in a request are too few for the " +
             NameOf(value.type) + " at " + NameOf(*value.kind, value.address, 1);
  }
  return {};
}

std::string CheckCount(const std::vector<CEntry>& entries, unsigned count) {
  if (CountOf(entries) == std::int64_t{count}) return {};
  return "text2: it lists " + std::to_string(CountOf(entries)) + " value(s), and the node has " +
         std::to_string(count) + " variable(s)";
}

// All but the number of the values.
std::string ReadMost(const DriverRecord& record, bool writes, CEndpoint& endpoint,
                     std::vector<CEntry>& entries) {
  std::string fault = ReadEndpoint(record.text1 ? record.text1 : "", endpoint);
  if (!fault.empty()) return "text1: " + fault;
  fault = CheckNumbers(record);
  if (fault.empty()) fault = CheckUnit(endpoint, record.station);
  if (fault.empty()) fault = ReadList(record, entries);
  if (fault.empty()) fault = CheckEntries(entries, MostRegisters(record), writes);
  return fault;
}

}  // namespace

std::string ReadSettings(const DriverRecord& record, bool writes, CSettings& settings) {
  std::vector<CEntry> entries;
  std::string fault = ReadMost(record, writes, settings.endpoint, entries);
  if (fault.empty()) fault = CheckCount(entries, record.variableCount);
  if (!fault.empty()) return fault;
  settings.unit = record.station;
  settings.timeOut = milliseconds(record.timeOut ? record.timeOut : kDefaultTimeOut);
  if (!settings.endpoint.IsSerial()) settings.pauses.longest = kLongestPauseByTcp;
  settings.requestPause = milliseconds(record.value1);
  settings.connectPause = milliseconds(record.value2);
  settings.closesAfterScan = record.value4 & kCloseAfterScan;
  settings.count = static_cast<int>(record.variableCount);
  CLimits limits = {MostRegisters(record), (record.value4 & kSingleRequests) != 0};
  if (writes) limits.registers = std::min(limits.registers, kMostWritten);
  settings.requests = writes ? PlanWrites(ValuesOf(entries), limits) : PlanReads(ValuesOf(entries), limits);
  return {};
}

std::string CheckSettings(const DriverRecord& record) {
  CEndpoint endpoint;
  std::vector<CEntry> entries;
  std::string fault = ReadMost(record, false, endpoint, entries);
  return fault.empty() && record.variableCount > 0 ? CheckCount(entries, record.variableCount) : fault;
}

}  // namespace modbus
