// The waveforms of the simulator: the value of a node at a moment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace simulator {

// The state of a connection during one read.
struct CMoment {
  double phase;        // within the period, from 0 to below 1
  double amplitude;    // in the unit of the values
  std::uint64_t read;  // number of the read on its handle, from 1
  std::uint64_t seed;  // of the noise
};

struct CWaveform {
  const char* name;
  // The value of the node at index.
  float (*at)(const CMoment& moment, std::size_t index);
  bool perValue;  // whether the values of one read differ; if not, one call is enough
};

// The waveform of this exact name; null if there is none.
const CWaveform* FindWaveform(std::string_view name);

}  // namespace simulator
