#include "vastra/equations/random.h"

#include "vastra/platform/thread.h"

namespace vastra {
namespace {

CRelaxed<std::uint32_t> g_state = 1;

}  // namespace

void SeedRandom(unsigned seed) { g_state = seed; }

// A linear congruential sequence of period 2^32. Its low bits have short periods, so the upper bits are used.
int NextRandom() {
  const std::uint32_t state = g_state * 214013u + 2531011u;
  g_state = state;
  return static_cast<int>(state >> 16 & 0x7FFF);
}

}  // namespace vastra
