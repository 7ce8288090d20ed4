// The waveforms of the simulator: what value a node has at a moment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace simulator {

// What one read sees of its connection.
struct CMoment {
  double phase;        // place within the period, from 0 to below 1
  double amplitude;    // in the unit of the values
  std::uint64_t read;  // number of the read on its handle, from 1
  std::uint64_t seed;  // of the noise
};

struct CWaveform {
  const char* name;
  // The value at place index of the node.
  float (*at)(const CMoment& moment, std::size_t index);
  bool perValue;  // whether values of one read differ: otherwise one call does for all
};

// The waveform of this name, letter by letter; null if there is none.
const CWaveform* FindWaveform(std::string_view name);

}  // namespace simulator
