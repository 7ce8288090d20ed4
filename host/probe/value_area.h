// CValueArea: the values of a call in memory that shows when a driver leaves them. Canaries are before the
// values, and after them pages that nobody may use. A driver that uses these pages is given them, so that the
// test can continue and report it; a driver that goes beyond them crashes.
#pragma once

#include <atomic>
#include <span>

#include "vastra/platform/string.h"

namespace vastra {

class CValueArea {
 public:
  // Throws std::bad_alloc. The values are untouched. While an area exists, a use of its pages is noticed;
  // of more than a few areas at the same time only those of the first ones.
  explicit CValueArea(std::size_t count);
  CValueArea(const CValueArea&) = delete;
  CValueArea& operator=(const CValueArea&) = delete;
  ~CValueArea();

  std::span<float> Values() const { return {m_end - m_count, m_count}; }
  // What a driver has done outside the values, or empty.
  CString FindFault() const;

  // Whether value is that of a new area, which no driver returns.
  static bool IsUntouched(float value);
  // For the handler of SIGSEGV: whether address is in the pages of an area. They can be used from now on.
  static bool GivePages(const void* address);

 private:
  const std::size_t m_count;
  const std::size_t m_size;  // bytes from m_begin to m_end
  float* const m_begin;      // of the mapping, with the canaries
  float* const m_end;        // of the values and of a page
  std::atomic<bool> m_isLeft{false};
};

}  // namespace vastra
