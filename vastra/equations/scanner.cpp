#include "vastra/equations/scanner.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

#include "vastra/equations/opcodes.h"

namespace vastra {
namespace {

struct CWord {
  std::string_view spelling;
  int token;
};

// Keywords and operators: those of the instruction set and the rest.
constexpr CWord kWords[] = {
#define VASTRA_WORD(number, Name, spelling, ...) {spelling, number},
    VASTRA_OPERATIONS(VASTRA_WORD)
#undef VASTRA_WORD
        {"if", tokenIf},
    {"then", tokenThen},
    {"else", tokenElse},
    {",", tokenComma},
    {";", tokenSemicolon},
    {"(", tokenOpen},
    {")", tokenClose},
    {":", tokenColon},
    {"?", tokenQuestion},
    {"=", tokenAssign},
};

// 0: no such word.
int FindWord(std::string_view text) {
  for (const CWord& word : kWords)
    if (word.spelling == text) return word.token;
  return 0;
}

bool IsLetter(int c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool IsDigit(int c) { return c >= '0' && c <= '9'; }
bool IsWhite(int c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Each automaton starts behind what opens its text and gives the place behind the longest match. It may read
// further than that.

// A letter was read. Letters, digits and single underscores that a letter or digit follows.
int MatchName() {
  int end = compileState.nEqIndex;
  for (;;) {
    int c = getmine();
    if (c == '_') c = getmine();
    if (!IsLetter(c) && !IsDigit(c)) return end;
    end = compileState.nEqIndex;
  }
}

// Goes past digits, at most limit of them. Gives the byte behind them.
int PassDigits(int c, int limit, int& end) {
  while (limit-- > 0 && IsDigit(c)) {
    end = compileState.nEqIndex;
    c = getmine();
  }
  return c;
}

// A digit was read: digits, then a point and digits, then an exponent of one or two digits.
int MatchNumber() {
  constexpr int kAny = std::numeric_limits<int>::max();
  int end = compileState.nEqIndex;
  int c = PassDigits(getmine(), kAny, end);
  if (c == '.') {
    const int whole = end;
    c = PassDigits(getmine(), kAny, end);
    if (end == whole) return end;
  }
  if (c != 'e' && c != 'E') return end;
  c = getmine();
  if (c == '+' || c == '-') c = getmine();
  PassDigits(c, 2, end);
  return end;
}

// The opening was read. An odd run of stars and a slash ends the comment; an even run and a slash is an end
// only if no later one comes. -1: it has no end, so it is no comment.
int MatchBlockComment() {
  enum { inText, oneStar, twoStars } state = inText;
  int end = -1;
  for (int c = getmine(); c >= 0; c = getmine()) {
    if (c == '*') {
      state = state == oneStar ? twoStars : oneStar;
      continue;
    }
    if (c == '/' && state == oneStar) return compileState.nEqIndex;
    if (c == '/' && state == twoStars) end = compileState.nEqIndex;
    state = inText;
  }
  return end;
}

// The opening was read. The first line feed ends it; without one the last carriage return does. -1: neither
// is there, so it is no comment.
int MatchLineComment() {
  int end = -1;
  for (int c = getmine(); c >= 0; c = getmine()) {
    if (c == '\n') return compileState.nEqIndex;
    if (c == '\r') end = compileState.nEqIndex;
  }
  return end;
}

// A slash was read. -1: no comment starts with it.
int MatchComment() {
  const int c = getmine();
  return c == '*' ? MatchBlockComment() : c == '/' ? MatchLineComment() : -1;
}

// The value as a C program reads it, whatever the locale. Beyond the range of a double it is infinite or 0; a
// text that stands for so small a number has no digit but 0 in front of its point.
double Value(std::string_view text) {
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc()) return value;
  return text[text.find_first_not_of('0')] == '.' ? 0.0 : HUGE_VAL;
}

// Takes the text from start to end as matched.
void Accept(int start, int end) {
  compileState.nEqIndex = end;
  compileState.Text = compileState.ParsingEq.Mid(start, end - start);
  compileState.nCount += end - start;
}

// An operator of two bytes, or of one, or a byte that nothing starts with.
int AcceptOperator(int start) {
  std::string_view text = compileState.ParsingEq.View().substr(static_cast<std::size_t>(start), 2);
  int token = FindWord(text);
  if (!token) token = FindWord(text = text.substr(0, 1));
  Accept(start, start + static_cast<int>(text.size()));
  return token ? token : tokenInvalid;
}

}  // namespace

thread_local CCompileState compileState;

int getmine() {
  CCompileState& state = compileState;
  if (state.nEqIndex >= state.ParsingEq.GetLength()) return -1;
  return static_cast<unsigned char>(state.ParsingEq[state.nEqIndex++]);
}

int yylex() {
  for (;;) {
    const int start = compileState.nEqIndex;
    const int c = getmine();
    if (c < 0) return tokenEnd;
    if (IsWhite(c)) {
      Accept(start, start + 1);
      continue;
    }
    if (IsLetter(c)) {
      Accept(start, MatchName());
      const int keyword = FindWord(compileState.Text.View());
      return keyword ? keyword : tokenName;
    }
    if (IsDigit(c)) {
      Accept(start, MatchNumber());
      compileState.dValue = Value(compileState.Text.View());
      return tokenNumber;
    }
    const int end = c == '/' ? MatchComment() : -1;
    if (end < 0) return AcceptOperator(start);
    Accept(start, end);
  }
}

}  // namespace vastra
