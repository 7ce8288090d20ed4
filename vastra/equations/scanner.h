// The scanner of the equation language: it turns one statement into tokens, for the grammar. Operators,
// functions and opcodes share their numbers (opcodes.h).
#pragma once

#include "vastra/equations/compile_state.h"

namespace vastra {

// Tokens that are no operation. ORDER TOKEN: grammar.y has the same numbers.
constexpr int tokenEnd = 0, tokenInvalid = 1, tokenIf = 258, tokenThen = 259, tokenElse = 260,
              tokenName = 261, tokenNumber = 262, tokenComma = 263, tokenSemicolon = 280, tokenOpen = 281,
              tokenClose = 282, tokenColon = 294, tokenQuestion = 295, tokenAssign = 296;

// The next byte of compileState.ParsingEq, 0 to 255, or -1 at its end. The scanner's only input.
int getmine();

// The next token from compileState.nEqIndex on, 0 at the end. Skips white space and comments. Of several
// matches the longest wins. Leaves the matched text in Text, its end in nCount and the value of a number in
// dValue.
int yylex();

}  // namespace vastra
