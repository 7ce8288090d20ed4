// Tables of text for a terminal.
#pragma once

#include <string>
#include <vector>

namespace vastra {

// A line for each row; the columns are as wide as their widest cell.
std::string TextTable(const std::vector<std::vector<std::string>>& rows);
// "12 s", "5 min", "7 h", "30 d".
std::string AgeWords(double seconds);

}  // namespace vastra
