#include "vastra/equations/places.h"

#include <bit>

namespace vastra {

std::uint32_t CPlaces::Add(double value) {
  m_file.push_back(value);
  return static_cast<std::uint32_t>(m_file.size() - 1);
}

std::uint32_t CPlaces::Literal(double value) {
  const auto [found, isNew] = m_literals.try_emplace(std::bit_cast<std::uint64_t>(value), 0);
  if (isNew) found->second = Add(value);
  return found->second;
}

std::uint32_t CPlaces::Temporary(std::size_t depth) {
  while (m_temporaries.size() <= depth) m_temporaries.push_back(Add(0.0));
  return m_temporaries[depth];
}

}  // namespace vastra
