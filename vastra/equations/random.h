// The random numbers of the equation language: one generator for the process, identical on all platforms.
#pragma once

#include "vastra/platform/api.h"

namespace vastra {

// Starts the sequence that belongs to seed.
VASTRA_API void SeedRandom(unsigned seed);

// The next number, 0 to 32767. Threads that call it at the same time can get the same number.
VASTRA_API int NextRandom();

}  // namespace vastra
