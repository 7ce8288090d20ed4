#include "host/cli/terminal/screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "host/common/shown_text.h"

namespace vastra {
namespace {

// A channel counts if it has at least half of the strongest one.
int ColourCode(COLORREF colour) {
  const COLORREF red = colour & 0xFF, green = colour >> 8 & 0xFF, blue = colour >> 16 & 0xFF;
  const COLORREF half = (std::max({red, green, blue}) + 1) / 2;
  return 30 + (red >= half) + 2 * (green >= half) + 4 * (blue >= half);
}

// The start of a UTF-8 text, up to so many columns.
std::string Cut(const std::string& text, std::size_t columns) {
  std::size_t at = 0;
  for (; at < text.size(); ++at)
    if (!IsInsideCharacter(text[at]) && columns-- == 0) break;
  return text.substr(0, at);
}

}  // namespace

bool CanErase(int file) {
  const char* kind = std::getenv("TERM");
  return ::isatty(file) && !(kind && std::strcmp(kind, "dumb") == 0);
}

CScreenSize ScreenSizeOf(int file) {
  CScreenSize size;
  winsize known = {};
  if (::ioctl(file, TIOCGWINSZ, &known) != 0) return size;
  if (known.ws_row >= 2) size.rows = known.ws_row;
  if (known.ws_col >= 2) size.columns = known.ws_col;
  return size;
}

std::string Coloured(const std::string& text, COLORREF colour) {
  return "\033[" + std::to_string(ColourCode(colour)) + "m" + text + "\033[0m";
}

std::vector<std::string> Fit(const std::vector<std::string>& lines, CScreenSize size) {
  std::vector<std::string> fitting;
  for (const std::string& line : lines)
    if (fitting.size() + 1 < size.rows) fitting.push_back(Cut(Printable(line), size.columns - 1));
  return fitting;
}

std::string Drawn(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : "\n") + line + "\033[K";
  return text;
}

std::string Home(const std::vector<std::string>& lines) {
  if (lines.empty()) return {};
  return lines.size() < 2 ? "\r" : "\r\033[" + std::to_string(lines.size() - 1) + "A";
}

}  // namespace vastra
