#include "host/fleet/settings_file.h"

#include <algorithm>
#include <string_view>

namespace vastra {
namespace {

constexpr std::string_view kBom = "\xef\xbb\xbf", kBlank = " \t\r", kQuotes = "\"'";
constexpr std::string_view kWord = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-";

bool IsOneOf(std::string_view letters, char one) { return letters.find(one) != std::string_view::npos; }

class CSettingsReader {
 public:
  explicit CSettingsReader(std::string text) : m_text(std::move(text)) {
    if (m_text.starts_with(kBom)) m_place = kBom.size();
  }

  std::vector<CSetting> Read() {
    for (SkipLines(); m_place < m_text.size(); SkipLines()) {
      if (Accept('['))
        ReadPart();
      else
        ReadSetting();
      SkipBlank();
      if (m_place < m_text.size() && Next() != '\n') Fail("the line should end after the value");
    }
    return std::move(m_settings);
  }

 private:
  [[noreturn]] void Fail(const std::string& text) const { throw CSettingsFault(m_line, text); }
  char Next() const { return m_place < m_text.size() ? m_text[m_place] : '\n'; }
  bool Accept(char wanted) {
    if (m_place >= m_text.size() || Next() != wanted) return false;
    ++m_place;
    return true;
  }

  // What is not a line: spaces, and a comment.
  void SkipBlank() {
    while (m_place < m_text.size() && IsOneOf(kBlank, Next())) ++m_place;
    if (Next() == '#') m_place = std::min(m_text.find('\n', m_place), m_text.size());
  }
  void SkipLines() {
    for (SkipBlank(); Accept('\n'); SkipBlank()) ++m_line;
  }

  std::string ReadWord() {
    SkipBlank();
    const std::size_t begin = m_place;
    while (IsOneOf(kWord, Next())) ++m_place;
    std::string word = m_text.substr(begin, m_place - begin);
    SkipBlank();
    return word;
  }

  void ReadPart() {
    m_part = ReadWord();
    if (m_part.empty() || !Accept(']')) Fail("a part is a name in brackets, such as [ship]");
  }

  void ReadSetting() {
    CSetting one = {m_part, ReadWord(), {}, false, m_line};
    if (one.key.empty() || !Accept('=')) Fail("is neither a part such as [ship] nor KEY = VALUE");
    const auto same = std::ranges::find_if(
        m_settings, [&](const CSetting& other) { return other.part == one.part && other.key == one.key; });
    if (same != m_settings.end()) Fail(one.key + " is in line " + std::to_string(same->line) + " already");
    SkipBlank();
    one.isList = Accept('[');
    if (one.isList)
      ReadList(one);
    else
      one.values = {ReadValue(one.key)};
    m_settings.push_back(std::move(one));
  }

  void ReadList(CSetting& one) {
    for (SkipLines(); !Accept(']'); SkipLines()) {
      one.values.push_back(ReadValue(one.key));
      SkipLines();
      if (!Accept(',') && Next() != ']')
        throw CSettingsFault(one.line, "the list of " + one.key + " has no ] at its end, or no comma");
    }
  }

  std::string ReadValue(const std::string& key) {
    if (const char quote = Next(); IsOneOf(kQuotes, quote)) return ReadQuoted(key);
    const std::size_t begin = m_place;
    while (Next() != '\n' && !IsOneOf(" \t\r,]#", Next())) ++m_place;
    if (m_place == begin) Fail(key + " has no value");
    return m_text.substr(begin, m_place - begin);
  }

  // Between " the backslash makes the next quote or backslash a part of the value; between ' all bytes are.
  std::string ReadQuoted(const std::string& key) {
    const char quote = m_text[m_place++];
    std::string value;
    for (; Next() != quote; ++m_place) {
      if (Next() == '\n') Fail("the value of " + key + " has no " + quote + " at its end");
      if (quote == '"' && Next() == '\\') {
        ++m_place;
        if (!IsOneOf("\"\\", Next())) Fail("a backslash in the value of " + key + " needs a second one");
      }
      value += Next();
    }
    ++m_place;
    return value;
  }

  const std::string m_text;
  std::size_t m_place = 0, m_line = 1;
  std::string m_part;
  std::vector<CSetting> m_settings;
};

}  // namespace

std::vector<CSetting> ParseSettings(std::istream& text) {
  return CSettingsReader(std::string(std::istreambuf_iterator<char>(text), {})).Read();
}

}  // namespace vastra
