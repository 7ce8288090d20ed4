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

// Keywords and operators: those of the instruction set, then the others.
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

// Returns 0 if there is no such word.
int FindWord(std::string_view text) {
  for (const CWord& word : kWords)
    if (word.spelling == text) return word.token;
  return 0;
}

bool IsLetter(int c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool IsDigit(int c) { return c >= '0' && c <= '9'; }
bool IsWhite(int c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Each Match function starts after the first bytes of its token and returns the offset after the longest
// match. It may read more bytes than that.

// Called after a letter. Matches letters, digits and single underscores before a letter or digit.
int MatchName() {
  int end = compileState.nEqIndex;
  for (;;) {
    int c = getmine();
    if (c == '_') c = getmine();
    if (!IsLetter(c) && !IsDigit(c)) return end;
    end = compileState.nEqIndex;
  }
}

// Skips digits, at most limit of them. Returns the byte after them.
int PassDigits(int c, int limit, int& end) {
  while (limit-- > 0 && IsDigit(c)) {
    end = compileState.nEqIndex;
    c = getmine();
  }
  return c;
}

// Called after a digit. Matches digits, then a point and digits, then an exponent of one or two digits.
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

// Called after the opening. An odd number of stars and a slash ends the comment; an even number and a slash
// ends it only if no later end follows. Returns -1 without an end: then it is not a comment.
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

// Called after the opening. The first line feed ends the comment; without a line feed the last carriage
// return does. Returns -1 without either: then it is not a comment.
int MatchLineComment() {
  int end = -1;
  for (int c = getmine(); c >= 0; c = getmine()) {
    if (c == '\n') return compileState.nEqIndex;
    if (c == '\r') end = compileState.nEqIndex;
  }
  return end;
}

// Called after a slash. Returns -1 if it does not start a comment.
int MatchComment() {
  const int c = getmine();
  return c == '*' ? MatchBlockComment() : c == '/' ? MatchLineComment() : -1;
}

// The value as C reads it, in any locale. Outside the range of a double it is infinity or 0: a number that is
// too small has only zeros before its point.
double Value(std::string_view text) {
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc()) return value;
  return text[text.find_first_not_of('0')] == '.' ? 0.0 : HUGE_VAL;
}

// Makes the text from start to end the match.
void Accept(int start, int end) {
  compileState.nEqIndex = end;
  compileState.Text = compileState.ParsingEq.Mid(start, end - start);
  compileState.nCount += end - start;
}

// Matches an operator of two bytes or one, or one byte that starts no token.
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
