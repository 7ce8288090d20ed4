// The newest texts of an endless list, by their numbers, which count from 1.
#pragma once

#include <cstdint>
#include <deque>

#include "host/web/shared_text.h"

namespace vastra {

class CTextRing {
 public:
  struct CEntry {
    std::uint64_t number;
    std::size_t bytes;
    CTextPtr text;
  };

  // At most so many texts, and so many bytes of what they are made of.
  CTextRing(std::size_t mostTexts, std::size_t mostBytes) : m_mostTexts(mostTexts), m_mostBytes(mostBytes) {}

  // The number of the next text, which Add gives to it.
  std::uint64_t Next() const { return m_last + 1; }
  std::uint64_t Last() const { return m_last; }
  void Add(CTextPtr text, std::size_t bytes) {
    m_entries.push_back({++m_last, bytes, std::move(text)});
    m_bytes += bytes;
    while (m_entries.size() > m_mostTexts || m_bytes > m_mostBytes) {
      m_bytes -= m_entries.front().bytes;
      m_entries.pop_front();
    }
  }
  // So many texts never came: no text has their numbers.
  void Skip(std::uint64_t count) { m_last += count; }

  const std::deque<CEntry>& Entries() const { return m_entries; }
  // The number before the first text that is kept.
  std::uint64_t Before() const { return m_entries.empty() ? m_last : m_entries.front().number - 1; }

 private:
  std::size_t m_mostTexts, m_mostBytes, m_bytes = 0;
  std::uint64_t m_last = 0;
  std::deque<CEntry> m_entries;
};

}  // namespace vastra
