// What a terminal can show, and the codes that control it. CTerminal is built on it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

struct CScreenSize {
  std::size_t rows = 24;
  std::size_t columns = 80;
};

// Whether file is a terminal that can erase a line.
bool CanErase(int file);
// The size of the terminal; that of the default if the terminal does not report it.
CScreenSize ScreenSizeOf(int file);

// Text in the basic colour of the terminal that is nearest to colour. The basic colours are readable on a
// dark and on a light background.
std::string Coloured(const std::string& text, COLORREF colour);

// As many of lines as fit on the screen below one other line, without control characters, and cut to less
// than its width: a line of the full width could wrap.
std::vector<std::string> Fit(const std::vector<std::string>& lines, CScreenSize size);

// The codes that draw lines; from their end to their start; and erase all from there on.
std::string Drawn(const std::vector<std::string>& lines);
std::string Home(const std::vector<std::string>& lines);
constexpr const char* kEraseBelow = "\033[J";

}  // namespace vastra
