// CArchiveFields: stores or loads the fields of a form, in the direction of an archive, so that the order of
// the fields is defined once. FIELDS derives from it, has Visit for its own types and passes the fields of
// each to VisitAll.
#pragma once

#include "vastra/platform/archive.h"

namespace vastra {

template <class FIELDS>
class CArchiveFields {
 public:
  explicit CArchiveFields(CArchive& ar) : m_ar(ar) {}

  void Visit(std::uint8_t& value) { Move(value); }
  void Visit(std::uint32_t& value) { Move(value); }
  void Visit(std::int32_t& value) { Move(value); }
  void Visit(CString& text) { Move(text); }
  void Visit(CStringArray& texts) { m_ar.Serialize(texts); }
  // Two u32, the low one first.
  void Visit(std::uint64_t& value) {
    auto low = static_cast<std::uint32_t>(value), high = static_cast<std::uint32_t>(value >> 32);
    Move(low);
    Move(high);
    value = std::uint64_t{high} << 32 | low;
  }

 protected:
  template <class... T>
  void VisitAll(T&... values) {
    (static_cast<FIELDS*>(this)->Visit(values), ...);
  }

  CArchive& m_ar;

 private:
  template <class T>
  void Move(T& value) {
    if (m_ar.IsStoring())
      m_ar << value;
    else
      m_ar >> value;
  }
};

}  // namespace vastra
