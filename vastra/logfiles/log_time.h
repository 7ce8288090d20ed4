// Times and counts of samples in the lines about kept logs.
#pragma once

#include <string>

#include "vastra/logfiles/sample_store.h"

namespace vastra {

// Seconds since 1970, with the milliseconds.
inline double Seconds(const _timeb& time) { return time.time + time.millitm / 1000.0; }

// Local time, such as "2026-03-29 01:59:59".
CString ShowTime(const _timeb& time);

// "1 sample", "2 samples".
CString ShowCount(std::uint64_t samples);

// The time of the sample at index, from 0, of the samples in spans.
_timeb TimeOf(const CSampleSpans& spans, std::uint64_t index);

}  // namespace vastra
