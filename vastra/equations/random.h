// The random numbers of the equation language: one generator for the process, the same on every platform.
#pragma once

#include "vastra/platform/api.h"

namespace vastra {

// Starts the sequence that belongs to seed.
VASTRA_API void SeedRandom(unsigned seed);

// The next number, 0 to 32767. Threads that draw at the same moment may get the same one.
VASTRA_API int NextRandom();

}  // namespace vastra
