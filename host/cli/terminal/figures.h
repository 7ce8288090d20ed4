// What a status is made of: columns, a bar, a spark line.
#pragma once

#include <deque>
#include <string>

namespace vastra {

// text with blanks up to width characters, before it or after it. A longer text stays.
std::string PadLeft(const std::string& text, std::size_t width);
std::string PadRight(const std::string& text, std::size_t width);

// A bar of which part, from 0 to 1, is filled: "[#####...............]".
std::string Bar(float part);

// One character for each value: a bar of one of eight heights, the lowest for the lowest value. A value that
// is not finite is a blank. If all values are the same, the bars are of medium height.
std::string SparkLine(const std::deque<float>& values);

}  // namespace vastra
