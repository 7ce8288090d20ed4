#include "host/desktop/equation_help_rules.h"

#include <algorithm>
#include <unordered_set>

#include "host/common/equation_check.h"
#include "host/common/name_set.h"
#include "vastra/equations/opcodes.h"
#include "vastra/equations/separator.h"

namespace vastra {
namespace {

template <class CHAR>
bool IsDigitOf(CHAR c) {
  return c >= '0' && c <= '9';
}
template <class CHAR>
bool IsLetterOf(CHAR c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
template <class CHAR>
bool IsWordOf(CHAR c) {
  return IsLetterOf(c) || IsDigitOf(c) || c == '_';
}
template <class CHAR>
bool IsBlankOf(CHAR c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The end of the token of a kind in text, from begin on.
template <class CHAR>
std::size_t EndOfWord(std::basic_string_view<CHAR> text, std::size_t begin) {
  while (begin < text.size() && IsWordOf(text[begin])) ++begin;
  return begin;
}

template <class CHAR>
std::size_t EndOfNumber(std::basic_string_view<CHAR> text, std::size_t begin) {
  std::size_t end = begin;
  const auto passDigits = [&] {
    while (end < text.size() && IsDigitOf(text[end])) ++end;
  };
  passDigits();
  if (end + 1 < text.size() && text[end] == '.' && IsDigitOf(text[end + 1])) ++end, passDigits();
  if (end >= text.size() || (text[end] != 'e' && text[end] != 'E')) return end;
  ++end;
  if (end < text.size() && (text[end] == '+' || text[end] == '-')) ++end;
  passDigits();
  return end;
}

// After the end of a comment that began before from.
template <class CHAR>
std::size_t EndOfComment(std::basic_string_view<CHAR> text, std::size_t from, bool& isInComment) {
  for (std::size_t i = from; i + 1 < text.size(); ++i)
    if (text[i] == '*' && text[i + 1] == '/') return isInComment = false, i + 2;
  isInComment = true;
  return text.size();
}

bool IsFunction(std::string_view word) {
  return std::ranges::any_of(EquationFunctions(), [&](const CString& name) { return name.View() == word; });
}

template <class CHAR>
CEquationToken NextToken(std::basic_string_view<CHAR> text, std::size_t begin, bool& isInComment) {
  const CHAR c = text[begin], next = begin + 1 < text.size() ? text[begin + 1] : CHAR();
  if (IsLetterOf(c)) {
    const std::size_t end = EndOfWord(text, begin);
    const std::string word(text.begin() + static_cast<std::ptrdiff_t>(begin),
                           text.begin() + static_cast<std::ptrdiff_t>(end));
    return {IsFunction(word) ? EEquationToken::function : EEquationToken::name, begin, end - begin};
  }
  if (IsDigitOf(c)) return {EEquationToken::number, begin, EndOfNumber(text, begin) - begin};
  if (c == '/' && next == '*')
    return {EEquationToken::comment, begin, EndOfComment(text, begin + 2, isInComment) - begin};
  if (c == '/' && next == '/') {
    const std::size_t end = text.find(CHAR('\n'), begin);
    return {EEquationToken::comment, begin, std::min(end, text.size()) - begin};
  }
  return {EEquationToken::other, begin, 1};
}

int TokenLength(const CString& text, int offset) {
  bool isInComment = false;
  const std::string_view rest = text.View().substr(static_cast<std::size_t>(offset));
  return rest.empty() ? 0 : static_cast<int>(NextToken(rest, 0, isInComment).length);
}

}  // namespace

template <class CHAR>
std::vector<CEquationToken> EquationTokens(std::basic_string_view<CHAR> line, bool& isInComment) {
  std::vector<CEquationToken> tokens;
  std::size_t place = isInComment ? EndOfComment(line, 0, isInComment) : 0;
  if (place > 0) tokens.push_back({EEquationToken::comment, 0, place});
  while (place < line.size()) {
    if (IsBlankOf(line[place])) {
      ++place;
      continue;
    }
    tokens.push_back(NextToken(line, place, isInComment));
    place += tokens.back().length;
  }
  return tokens;
}

template std::vector<CEquationToken> EquationTokens(std::string_view, bool&);
template std::vector<CEquationToken> EquationTokens(std::u16string_view, bool&);

const CStringArray& EquationFunctions() {
  static const CStringArray functions = [] {
    CStringArray names;
    std::size_t count = 0;
    const COpcode* opcodes = GetOpcodes(count);
    for (std::size_t i = 0; i < count; ++i)
      if (opcodes[i].compute && IsLetterOf(opcodes[i].spelling[0])) names.Add(opcodes[i].spelling);
    names.Add("if");
    return names;
  }();
  return functions;
}

CStringArray CompletionsOf(const CString& begin, const CStringArray& names) {
  CStringArray words;
  std::unordered_set<std::string_view> seen;
  const auto fits = [&](const CString& word) {
    return word.Left(begin.GetLength()).CompareNoCase(begin) == 0 && seen.insert(word.View()).second;
  };
  for (const CString& name : names)
    if (fits(name)) words.Add(name);
  for (const CString& function : EquationFunctions())
    if (fits(function)) words.Add(function + "(");
  return words;
}

CEquationTextFault CEquationTrial::Compile(const CString& text, const CStringArray& names,
                                           bool areNamesKnown) {
  CStringArray statements, assigned;
  CArray<int, int> positions;
  CEquationSeparator().Separate(text, statements, assigned, positions);
  CEquator compiled;
  const CEquationFault fault = compiled.Compile(names, statements);
  if (fault.statement == 0) {
    m_equator = std::move(compiled);
    m_sample.RemoveAll();
    m_names = names;
    FindRead(text);
    return {};
  }
  if (fault.isUnknownName && !areNamesKnown) return {};
  CString place;
  place.Format("equation %d: ", fault.statement);
  const int offset = positions[fault.statement - 1] + fault.offset;
  return {offset, TokenLength(text, offset), place + EquationFaultText(fault, names, statements)};
}

void CEquationTrial::FindRead(const CString& text) {
  bool isInComment = false;
  CNameSet known(m_names);
  CStringArray used;
  for (const CEquationToken& token : EquationTokens(text.View(), isInComment)) {
    const CString word(text.View().substr(token.begin, token.length));
    if (token.kind == EEquationToken::name && known.Has(word)) used.Add(word);
  }
  const CNameSet isUsed(used);
  CStringArray read;
  for (const CString& name : m_names)
    if (isUsed.Has(name) && FindIn(read, name) < 0) read.Add(name);
  m_read = read;
}

void CEquationTrial::Run(const std::vector<float>& values) {
  m_sample.RemoveAll();
  m_sample.SetSize(m_names.GetSize());
  for (int i = 0; i < m_read.GetSize() && static_cast<std::size_t>(i) < values.size(); ++i)
    m_sample[FindIn(m_names, m_read[i])] = values[static_cast<std::size_t>(i)];
  m_equator.Run(m_sample);
}

std::vector<CEquationTrial::CResult> CEquationTrial::Results() const {
  std::vector<CResult> results;
  const CStringArray& names = m_equator.GetNewVariables();
  results.reserve(static_cast<std::size_t>(names.GetSize()));
  for (int i = 0; i < names.GetSize(); ++i)
    results.push_back({names[i], m_equator.GetValue(m_sample, static_cast<UINT>(m_names.GetSize() + i))});
  for (const int statement : m_equator.GetUndefined())
    for (CResult& result : results)
      if (result.name == m_equator.GetTarget(statement)) result.isUndefined = true;
  return results;
}

}  // namespace vastra
