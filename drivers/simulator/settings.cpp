#include "settings.h"

#include <string_view>

#include "drivers/common/text.h"
#include "station.h"

namespace simulator {
namespace {

// The numbers that must not be negative.
constexpr struct {
  int DriverRecord::*value;
  const char* name;
} kNumbers[] = {
    {&DriverRecord::station, "station"}, {&DriverRecord::registerAddress, "registerAddress"},
    {&DriverRecord::value1, "value1"},   {&DriverRecord::value2, "value2"},
    {&DriverRecord::value3, "value3"},   {&DriverRecord::value4, "value4"},
};

std::string ReadNumbers(const DriverRecord& record) {
  for (const auto& number : kNumbers)
    if (const int value = record.*number.value; value < 0)
      return number.name + std::string(" is negative: ") + std::to_string(value);
  const unsigned last = static_cast<unsigned>(CStation::kRegisters - 1);
  const auto first = static_cast<unsigned>(record.registerAddress);
  if (record.station > 0 && (first > last || record.variableCount > last - first + 1))
    return "registerAddress is too high: the registers of a station end at " + std::to_string(last);
  return {};
}

// A comma list of names; a text without any name means a sine.
std::string ReadWaveforms(std::string_view list, std::vector<const CWaveform*>& waveforms) {
  if (driver::Trimmed(list).empty()) list = "sine";
  for (std::size_t start = 0, comma = 0; comma != std::string_view::npos; start = comma + 1) {
    comma = list.find(',', start);
    const std::string_view name = driver::Trimmed(list.substr(start, comma - start));
    const CWaveform* waveform = FindWaveform(name);
    if (!waveform) return "text1 has an unknown waveform: \"" + driver::Shown(name) + '"';
    waveforms.push_back(waveform);
  }
  return {};
}

}  // namespace

std::string ReadSettings(const DriverRecord& record, CSettings& settings) {
  std::string fault = ReadNumbers(record);
  if (fault.empty()) fault = ReadWaveforms(record.text1 ? record.text1 : "", settings.waveforms);
  settings.period = std::chrono::milliseconds(record.value1 ? record.value1 : kDefaultPeriod);
  settings.amplitude = (record.value2 ? record.value2 : kDefaultAmplitude) / 1000.0;
  settings.seed = static_cast<std::uint64_t>(record.value3);
  settings.station = record.station;
  settings.firstRegister = record.registerAddress;
  settings.failEvery = static_cast<unsigned>(record.value4);
  settings.failStatus = record.value5;
  return fault;
}

}  // namespace simulator
