// The translation of one statement, from its lines to steps (steps.h). For CProgram.
#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "vastra/equations/line_code.h"
#include "vastra/equations/steps.h"

namespace vastra {

// A step whose function and distances are not looked up yet.
struct CDraft {
  static constexpr int kNoTarget = -1, kUndefined = -2;

  CStepKind kind;
  std::uint32_t a = 0, b = 0, c = 0, d = 0, to = 0;
  int target = kNoTarget;  // the step that it jumps to; kUndefined: what serves an undefined result
};

// The file of doubles: the variables, and behind them literals and temporaries as statements need them.
class CPlaces {
 public:
  explicit CPlaces(int variables = 0) : m_variables(variables), m_file(static_cast<std::size_t>(variables)) {}

  int GetVariables() const { return m_variables; }
  std::uint32_t Literal(double value);
  // For a value at that depth of the run-time stack. It is free again when the value is taken.
  std::uint32_t Temporary(std::size_t depth);
  // Not for a temporary.
  bool IsLiteral(std::uint32_t place) const { return place >= static_cast<std::uint32_t>(m_variables); }
  double GetLiteral(std::uint32_t place) const { return m_file[place]; }

  std::vector<double>& GetFile() { return m_file; }

 private:
  std::uint32_t Add(double value);

  int m_variables;
  std::vector<double> m_file;
  std::map<std::uint64_t, std::uint32_t> m_literals;  // by their bits
  std::vector<std::uint32_t> m_temporaries;           // by depth
};

// Appends to steps those of one statement, which leave its result in the variable target. False, and nothing
// is appended, for lines that no parser makes, and for those that can be undefined and draw from rand too.
bool LowerStatement(const std::vector<CFlatLine>& lines, int target, CPlaces& places,
                    std::vector<CDraft>& steps);

}  // namespace vastra
