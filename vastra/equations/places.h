// CPlaces: the register file of lowered statements: an array of doubles with the variables first, then
// literals and temporaries as statements need them. A place is an index into it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace vastra {

class CPlaces {
 public:
  // Variables have the same numbers as in compiled code and start at 0.0.
  explicit CPlaces(int variables) : m_variables(variables), m_file(static_cast<std::size_t>(variables)) {}

  int GetVariables() const { return m_variables; }
  std::uint32_t Literal(double value);
  // For a value at that depth of the run-time stack; free again when the value is popped.
  std::uint32_t Temporary(std::size_t depth);
  // For one value only: no other value uses the place.
  std::uint32_t Fresh() { return Add(0.0); }

  // For a place that is not a temporary: whether it is a literal, and its value.
  bool IsLiteral(std::uint32_t place) const { return place >= static_cast<std::uint32_t>(m_variables); }
  double GetLiteral(std::uint32_t place) const { return m_file[place]; }

  const double* GetRegisters() const { return m_file.data(); }
  double* GetRegisters() { return m_file.data(); }

 private:
  std::uint32_t Add(double value);

  int m_variables;
  std::vector<double> m_file;
  std::map<std::uint64_t, std::uint32_t> m_literals;  // by their bits
  std::vector<std::uint32_t> m_temporaries;           // by depth
};

}  // namespace vastra
