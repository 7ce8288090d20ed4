#include "waveform.h"

#include <cmath>

namespace simulator {
namespace {

constexpr double kTwoPi = 6.283185307179586;

// Mixes the bits of a number: the last steps of the SplitMix64 generator.
std::uint64_t Mix(std::uint64_t bits) {
  bits += 0x9E3779B97F4A7C15u;
  bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9u;
  bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBu;
  return bits ^ (bits >> 31);
}

float Sine(const CMoment& moment, std::size_t) {
  return static_cast<float>(moment.amplitude * std::sin(kTwoPi * moment.phase));
}

float Ramp(const CMoment& moment, std::size_t) { return static_cast<float>(moment.amplitude * moment.phase); }

float Square(const CMoment& moment, std::size_t) {
  return static_cast<float>(moment.phase < 0.5 ? moment.amplitude : -moment.amplitude);
}

// Depends only on seed, read and index, so that the same seed repeats the same run.
float Noise(const CMoment& moment, std::size_t index) {
  const std::uint64_t bits = Mix(Mix(Mix(moment.seed) + moment.read) + index);
  const double unit = static_cast<double>(bits >> 11) * 0x1p-53;  // from 0 to below 1
  return static_cast<float>(moment.amplitude * (2 * unit - 1));
}

float Counter(const CMoment& moment, std::size_t) { return static_cast<float>(moment.read); }

float Constant(const CMoment& moment, std::size_t) { return static_cast<float>(moment.amplitude); }

constexpr CWaveform kWaveforms[] = {
    {"sine", Sine, false},  {"ramp", Ramp, false},       {"square", Square, false},
    {"noise", Noise, true}, {"counter", Counter, false}, {"constant", Constant, false},
};

}  // namespace

const CWaveform* FindWaveform(std::string_view name) {
  for (const CWaveform& waveform : kWaveforms)
    if (name == waveform.name) return &waveform;
  return nullptr;
}

}  // namespace simulator
