// CString: a string of 8-bit bytes. It can contain any byte, including 0, and no operation interprets their
// encoding: the strings of a log or a configuration are written back byte for byte.
#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <utility>

#include "vastra/platform/api.h"

namespace vastra {

class VASTRA_API CString {
 public:
  CString() = default;
  CString(const char* text) : m_text(text ? text : "") {}  // null counts as empty
  CString(const char* bytes, std::size_t count) : m_text(bytes, count) {}
  explicit CString(std::string text) : m_text(std::move(text)) {}
  explicit CString(std::string_view text) : m_text(text) {}
  explicit CString(char c) : m_text(1, c) {}

  int GetLength() const { return static_cast<int>(m_text.size()); }
  bool IsEmpty() const { return m_text.empty(); }
  void Empty() { m_text.clear(); }

  // The byte at index, which is below GetLength().
  char operator[](int index) const { return m_text[static_cast<std::size_t>(index)]; }
  void SetAt(int index, char c) { m_text[static_cast<std::size_t>(index)] = c; }

  // Zero-terminated. For a reader of C strings the string ends at its first 0 byte.
  operator const char*() const { return m_text.c_str(); }
  std::string_view View() const { return m_text; }
  const std::string& Std() const { return m_text; }

  // Parts of the string. An index or a count outside the string is limited to it.
  CString Left(int count) const { return Mid(0, count); }
  CString Right(int count) const;
  CString Mid(int first) const { return Mid(first, GetLength()); }
  CString Mid(int first, int count) const;

  // The index of the first (last) match, or -1.
  int Find(char c, int start = 0) const;
  int Find(const char* text, int start = 0) const;
  int ReverseFind(char c) const;

  // White space is blank, tab, line feed, vertical tab, form feed and carriage return.
  void TrimLeft();
  void TrimRight();

  // Replaces the string by the output of printf.
  void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));

  // Negative, 0 or positive, as strcmp; the letters A to Z compare equal to a to z.
  int CompareNoCase(const CString& other) const;

  CString& operator+=(const CString& other) { return m_text += other.m_text, *this; }
  CString& operator+=(const char* other) { return m_text += other, *this; }
  CString& operator+=(char c) { return m_text += c, *this; }

  friend CString operator+(CString left, const CString& right) { return left += right; }
  friend CString operator+(CString left, const char* right) { return left += right; }
  friend CString operator+(const char* left, const CString& right) { return CString(left) += right; }
  friend CString operator+(CString left, char right) { return left += right; }
  friend bool operator==(const CString& a, const CString& b) { return a.m_text == b.m_text; }
  friend bool operator==(const CString& a, const char* b) { return a.m_text == b; }
  // By the bytes, as unsigned numbers. Without it, pairs and vectors of strings would compare the addresses
  // of their bytes.
  friend std::strong_ordering operator<=>(const CString& a, const CString& b) {
    return a.m_text <=> b.m_text;
  }

 private:
  std::string m_text;
};

// Whether c is a byte of a UTF-8 character after its first byte.
inline bool IsInsideCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

}  // namespace vastra
