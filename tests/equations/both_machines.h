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

// Describes how the two forms differ after a sample: in the values, in the undefined statements or in the
// number of random numbers that they used. Empty if they agree.
inline std::string FindDifference(CEquator& lowered, CEquator& reference, const CSampleValues& sample,
                                  int inputs) {
  CArray<double, double> results;
  SeedRandom(7);
  lowered.Run(sample);
  const int random = NextRandom();
  SeedRandom(7);
  reference.RunByLines(sample, results);
  if (random != NextRandom()) return "other random numbers";
  if (lowered.GetUndefined() != reference.GetUndefined()) return "other undefined statements";
  for (int i = 0; i < inputs + reference.GetNewVariables().GetSize(); ++i) {
    const float fast = lowered.GetValue(sample, static_cast<UINT>(i));
    const float slow = reference.GetValue(sample, static_cast<UINT>(i));
    if (!IsSameResult(fast, slow))
      return "value " + std::to_string(i) + ": " + std::to_string(fast) + " for " + std::to_string(slow);
  }
  return {};
}

// The same over several samples. For statements that do not compile it sets fault and returns an empty
// string.
inline std::string CompareMachines(const CStringArray& inputs, const CStringArray& statements,
                                   const std::vector<CSampleValues>& samples, CEquationFault& fault) {
  CEquator lowered, reference;
  fault = lowered.Compile(inputs, statements);
  if (fault.statement) return {};
  reference.Compile(inputs, statements);
  for (std::size_t pass = 0; pass < samples.size(); ++pass) {
    const std::string difference = FindDifference(lowered, reference, samples[pass], inputs.GetSize());
    if (!difference.empty()) return "pass " + std::to_string(pass) + ", " + difference;
  }
  return {};
}

}  // namespace vastra
