#include "vastra/platform/string.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace vastra {
namespace {

constexpr const char* kWhiteSpace = " \t\n\v\f\r";

int Index(std::size_t place) { return place == std::string::npos ? -1 : static_cast<int>(place); }

int Lower(char c) {
  const int byte = static_cast<unsigned char>(c);
  return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
}

}  // namespace

CString CString::Right(int count) const { return Mid(std::max(0, GetLength() - std::max(0, count))); }

CString CString::Mid(int first, int count) const {
  const int start = std::clamp(first, 0, GetLength());
  const int length = std::clamp(count, 0, GetLength() - start);
  return CString(m_text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(length)));
}

int CString::Find(char c, int start) const { return Index(m_text.find(c, static_cast<std::size_t>(start))); }

int CString::Find(const char* text, int start) const {
  return Index(m_text.find(text, static_cast<std::size_t>(start)));
}

int CString::ReverseFind(char c) const { return Index(m_text.rfind(c)); }

void CString::TrimLeft() { m_text.erase(0, std::min(m_text.find_first_not_of(kWhiteSpace), m_text.size())); }

void CString::TrimRight() { m_text.erase(m_text.find_last_not_of(kWhiteSpace) + 1); }

void CString::Format(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  std::va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  std::string text(static_cast<std::size_t>(std::max(0, length)), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  m_text = std::move(text);
}

int CString::CompareNoCase(const CString& other) const {
  const std::size_t common = std::min(m_text.size(), other.m_text.size());
  for (std::size_t i = 0; i < common; ++i)
    if (const int difference = Lower(m_text[i]) - Lower(other.m_text[i])) return difference;
  return GetLength() - other.GetLength();
}

}  // namespace vastra
