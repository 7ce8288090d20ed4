// CTextSerializer: writes the fields of the text report of a configuration, and can load them again.
// CTextReport writes whole rows. The report is for people.
#pragma once

#include "vastra/platform/archive.h"

namespace vastra {

class VASTRA_API CTextSerializer {
 public:
  CTextSerializer() = default;
  CTextSerializer(const CTextSerializer&) = default;
  CTextSerializer& operator=(const CTextSerializer&) = default;
  virtual ~CTextSerializer() = default;

  // The bytes of text, without a line end. Loading reads the whole rest of the archive.
  static void TextSerialize(CString& text, CArchive& ar);
  // A line "Yes" or "No". Loading reads a decimal integer at the start of the line; flag is not changed if
  // there is none, as in "Yes". Of a number of more than 32 bits the low 32 bits count.
  static void TextSerialize(int& flag, CArchive& ar);
  // A line for each string, then an empty line. Loading replaces the strings; it ends at an empty line or at
  // the end of the file.
  static void TextSerialize(CStringList& list, CArchive& ar);
  static void TextSerialize(CStringArray& array, CArchive& ar);
};

// Writes the rows of a report, in order, to an archive that stores.
class VASTRA_API CTextReport {
 public:
  explicit CTextReport(CArchive& ar) : m_ar(ar) {}

  // A string literal is written unchanged, a field as by its TextSerialize above.
  template <class... Parts>
  void Add(Parts&&... parts) {
    (Part(parts), ...);
  }
  // A number as "%d" and "%f" print it, in any locale.
  static CString Decimal(UINT number) { return Decimal(static_cast<int>(number)); }
  static CString Decimal(int number);
  static CString Fixed(float number);

 private:
  void Part(const char* text) { m_ar.WriteString(text); }
  template <class Field>
  void Part(Field& field) {
    CTextSerializer::TextSerialize(field, m_ar);
  }

  CArchive& m_ar;
};

}  // namespace vastra
