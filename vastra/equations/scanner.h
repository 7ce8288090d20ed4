// The scanner of the equation language: it splits one statement into tokens for the grammar. The token of an
// operator or a function is its opcode (opcodes.h).
#pragma once

#include "vastra/equations/compile_state.h"

namespace vastra {

// The other tokens. ORDER TOKEN: grammar.y has the same numbers.
constexpr int tokenEnd = 0, tokenInvalid = 1, tokenIf = 258, tokenThen = 259, tokenElse = 260,
              tokenName = 261, tokenNumber = 262, tokenComma = 263, tokenSemicolon = 280, tokenOpen = 281,
              tokenClose = 282, tokenColon = 294, tokenQuestion = 295, tokenAssign = 296;

// The next byte of compileState.ParsingEq, 0 to 255, or -1 at its end. The scanner's only input.
int getmine();

// Returns the next token from compileState.nEqIndex on, 0 at the end. Skips white space and comments. The
// longest match wins. Sets Text to the match, nCount to its end and dValue to the value of a number.
int yylex();

}  // namespace vastra
