// A list of statements on both machines: as the lines that the parser made, and in the form that runs for
// every sample.
#pragma once

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "vastra/equations/equator.h"
#include "vastra/equations/random.h"

namespace vastra {

using CSampleValues = CArray<float, float>;

// Bit for bit; of a NaN only that it is one.
template <class T>
bool IsSameResult(T a, T b) {
  return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

// What the machines do not agree on behind one pass: values, which statements are undefined, and how many
// random numbers were drawn. Empty: nothing.
inline std::string FindDifference(CEquator& lowered, CEquator& plain, const CSampleValues& sample,
                                  int inputs) {
  CArray<double, double> results;
  SeedRandom(7);
  lowered.Run(sample);
  const int random = NextRandom();
  SeedRandom(7);
  plain.RunByLines(sample, results);
  if (random != NextRandom()) return "other random numbers";
  if (lowered.GetUndefined() != plain.GetUndefined()) return "other undefined statements";
  for (int i = 0; i < inputs + plain.GetNewVariables().GetSize(); ++i) {
    const float fast = lowered.GetValue(sample, static_cast<UINT>(i));
    const float slow = plain.GetValue(sample, static_cast<UINT>(i));
    if (!IsSameResult(fast, slow))
      return "value " + std::to_string(i) + ": " + std::to_string(fast) + " for " + std::to_string(slow);
  }
  return {};
}

// Over several samples. Statements that do not compile differ in nothing; fault tells.
inline std::string CompareMachines(const CStringArray& inputs, const CStringArray& statements,
                                   const std::vector<CSampleValues>& samples, CEquationFault& fault) {
  CEquator lowered, plain;
  fault = lowered.Compile(inputs, statements);
  if (fault.statement) return {};
  plain.Compile(inputs, statements);
  for (std::size_t pass = 0; pass < samples.size(); ++pass) {
    const std::string difference = FindDifference(lowered, plain, samples[pass], inputs.GetSize());
    if (!difference.empty()) return "pass " + std::to_string(pass) + ", " + difference;
  }
  return {};
}

}  // namespace vastra
