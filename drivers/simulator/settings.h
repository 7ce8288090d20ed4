// The settings of a simulator node, read from its record.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "vastra/plc/driver_api.h"
#include "waveform.h"

namespace simulator {

constexpr int kDriverId = 9001;
constexpr int kDefaultPeriod = 10000;    // milliseconds
constexpr int kDefaultAmplitude = 1000;  // thousandths

struct CSettings {
  std::vector<const CWaveform*> waveforms;  // value i has the waveform at i modulo their number; not empty
  std::chrono::nanoseconds period;
  double amplitude;
  std::uint64_t seed;
  int station;         // 0: waveforms; above: the registers of that station
  int firstRegister;   // the node's first value
  unsigned failEvery;  // each n-th call of a handle fails; 0: none
  int failStatus;      // with this status
};

// Reads record into settings. Returns an empty text, or the bad setting and the reason.
std::string ReadSettings(const DriverRecord& record, CSettings& settings);

}  // namespace simulator
