// Runs statements in both forms: as the lines that the parser made, in the reference interpreter, and lowered
// to the form that runs for every sample. The tests and the fuzzer compare the two.
#pragma once

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "vastra/equations/equator.h"
#include "vastra/equations/random.h"

namespace vastra {

using CSampleValues = CArray<float, float>;

// Compares bit for bit; any two NaN are the same.
template <class T>
bool IsSameResult(T a, T b) {
  return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

// Describes how the two forms differ after one of the samples: in the values, in the undefined statements or
// in the number of random numbers that they used. Empty if they agree. For statements that do not compile it
// sets fault and returns an empty string.
inline std::string CompareMachines(const CStringArray& inputs, const CStringArray& statements,
                                   const std::vector<CSampleValues>& samples, CEquationFault& fault) {
  CEquator lowered, reference;
  CArray<double, double> results;
  fault = lowered.Compile(inputs, statements);
  if (fault.statement) return {};
  reference.Compile(inputs, statements);
  for (const CSampleValues& sample : samples) {
    SeedRandom(7);
    lowered.Run(sample);
    const int random = NextRandom();
    SeedRandom(7);
    reference.RunByLines(sample, results);
    if (random != NextRandom()) return "other random numbers";
    if (lowered.GetUndefined() != reference.GetUndefined()) return "other undefined statements";
    for (UINT i = 0; i < static_cast<UINT>(inputs.GetSize() + reference.GetNewVariables().GetSize()); ++i) {
      const float fast = lowered.GetValue(sample, i), slow = reference.GetValue(sample, i);
      if (!IsSameResult(fast, slow))
        return "value " + std::to_string(i) + ": " + std::to_string(fast) + " for " + std::to_string(slow);
    }
  }
  return {};
}

}  // namespace vastra
