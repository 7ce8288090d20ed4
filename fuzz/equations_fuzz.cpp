// Arbitrary bytes as the text of an equation editor. If they compile, both ways of execution give the same
// values.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "vastra/equations/equator.h"
#include "vastra/equations/random.h"
#include "vastra/equations/separator.h"

namespace vastra {
namespace {

using CSampleValues = CArray<float, float>;

void Require(bool holds) {
  if (!holds) std::abort();
}

CStringArray Inputs() {
  CStringArray names;
  for (const char* name : {"a", "b", "c", "d"}) names.Add(name);
  return names;
}

const std::vector<CSampleValues>& Samples() {
  static const std::vector<CSampleValues> samples = [] {
    static constexpr float kValues[][4] = {
        {0.0f, -0.0f, 1.0f, -2.5f}, {1.1f, 4.7f, NAN, HUGE_VALF}, {-3e9f, 1e-40f, 255.0f, 0.0f}};
    std::vector<CSampleValues> all;
    for (const auto& values : kValues) {
      CSampleValues sample;
      for (const float value : values) sample.Add(value);
      all.push_back(sample);
    }
    return all;
  }();
  return samples;
}

// A name for each statement with a "=", and a position in the text for each divider.
void CheckCuts(const CString& text, const CStringArray& equations, const CStringArray& variables,
               const CArray<int, int>& positions) {
  Require(variables.GetSize() <= equations.GetSize());
  for (const int place : positions) Require(place >= 0 && place <= text.GetLength());
  for (int i = 0; i < equations.GetSize() && i < positions.GetSize(); ++i)
    Require(text.Mid(positions[i], equations[i].GetLength()) == equations[i]);
}

// A fault is in the statement, or at the ";" after it.
void CheckFault(const CEquationFault& fault, const CStringArray& equations) {
  if (fault.statement == 0) return;
  Require(fault.statement <= equations.GetSize());
  Require(fault.offset >= 0 && fault.offset <= equations[fault.statement - 1].GetLength());
}

// Runs statements as the lines that the parser made, in the reference interpreter, and lowered to the form
// that runs for every sample. Describes how the two differ after one of the samples: in the values, in the
// undefined statements or in the number of random numbers that they used. Empty if they agree. For statements
// that do not compile it sets fault and returns an empty string.
std::string CompareMachines(const CStringArray& inputs, const CStringArray& statements,
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
      const bool areNan = std::isnan(fast) && std::isnan(slow);  // any two NaN are the same
      if (!areNan && std::memcmp(&fast, &slow, sizeof fast) != 0)
        return "value " + std::to_string(i) + ": " + std::to_string(fast) + " for " + std::to_string(slow);
    }
  }
  return {};
}

void Check(const CString& text) {
  CStringArray equations, variables;
  CArray<int, int> positions;
  CEquationSeparator().Separate(text, equations, variables, positions);
  CheckCuts(text, equations, variables, positions);

  CEquationFault fault;
  const std::string difference = CompareMachines(Inputs(), equations, Samples(), fault);
  CheckFault(fault, equations);
  if (difference.empty()) return;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  vastra::Check(vastra::CString(reinterpret_cast<const char*>(data), size));
  return 0;
}
