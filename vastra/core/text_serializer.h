// CTextSerializer: the parts of the text report of a configuration. The report is for people; each helper can
// also read back what it wrote.
#pragma once

#include "vastra/platform/archive.h"

namespace vastra {

class VASTRA_API CTextSerializer {
 public:
  CTextSerializer() = default;
  CTextSerializer(const CTextSerializer&) = default;
  CTextSerializer& operator=(const CTextSerializer&) = default;
  virtual ~CTextSerializer() = default;

  // The bytes of text, with no line end. Loading takes the whole rest of the archive.
  static void TextSerialize(CString& text, CArchive& ar);
  // A line "Yes" or "No". Loading takes a decimal integer off the head of the line; flag stays as it is if
  // there is none, as in "Yes". A number beyond 32 bits keeps its low ones.
  static void TextSerialize(int& flag, CArchive& ar);
  // A line for each text, and an empty one. Loading replaces what is there; it ends at an empty line or at
  // the end of the file.
  static void TextSerialize(CStringList& list, CArchive& ar);
  static void TextSerialize(CStringArray& array, CArchive& ar);
};

// The rows of a report, one behind the other, to an archive that stores.
class VASTRA_API CTextReport {
 public:
  explicit CTextReport(CArchive& ar) : m_ar(ar) {}

  // A text in quotes goes as it stands, a field as its helper above writes it.
  template <class... Parts>
  void Add(Parts&&... parts) {
    (Part(parts), ...);
  }
  // A number as "%d" and "%f" print it, whatever the locale.
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
