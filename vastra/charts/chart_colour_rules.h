// The colours of curves, for a light and a dark background: readable on both, and different for people who do
// not see all colours. Curves after the first kCurveColours have broken lines as well.
#pragma once

#include <array>
#include <cstdint>

namespace vastra {

struct CCurveColours {
  const char* name;
  std::uint32_t onLight, onDark;  // 0xRRGGBB
};

constexpr CCurveColours kCurveColourTable[] = {
    {"Blue", 0x1c6dd0, 0x5aa9ff},    {"Orange", 0xd4600a, 0xffa348}, {"Green", 0x1e8449, 0x5fd38d},
    {"Magenta", 0xc2187f, 0xff7ac6}, {"Teal", 0x0b7f93, 0x3fd0e0},   {"Red", 0xc8281e, 0xff7b72},
    {"Violet", 0x7442c8, 0xb794ff},  {"Olive", 0x75780a, 0xdede5a},  {"Brown", 0x8a4b20, 0xd9a066},
    {"Navy", 0x27408b, 0x8fa8ff},    {"Grey", 0x5b6670, 0xb4bec8},   {"Lime", 0x4f8a10, 0xa8e05f}};
constexpr unsigned kCurveColours = std::size(kCurveColourTable);

constexpr std::uint32_t CurveColour(unsigned colour, bool isDark) {
  const CCurveColours& entry = kCurveColourTable[colour % kCurveColours];
  return isDark ? entry.onDark : entry.onLight;
}

}  // namespace vastra
