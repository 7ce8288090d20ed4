// The worked examples of docs/file-formats.md: their bytes and their text, out of the page itself.
#pragma once

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>

#include "tests/support/files.h"

namespace vastra {

inline std::string FormatsPage() { return ReadBytes(VASTRA_DOCS "/file-formats.md"); }

// The bytes of the table in the part of the page from one heading to another. Its rows say at which offset
// each field stands.
inline std::string ExampleBytes(const char* from, const char* to) {
  static const std::regex kRow(R"(\| (\d+) \| ((?:[0-9A-F]{2} )+)\| .*)");
  const std::string text = FormatsPage();
  const std::size_t begin = text.find(from);
  std::istringstream page(text.substr(begin, text.find(to) - begin));
  std::string log;
  std::smatch row;
  for (std::string line; std::getline(page, line);) {
    if (!std::regex_match(line, row, kRow)) continue;
    EXPECT_EQ(std::stoul(row[1]), log.size()) << line;
    std::istringstream bytes(row[2]);
    for (unsigned byte; bytes >> std::hex >> byte;) log += static_cast<char>(byte);
  }
  return log;
}

inline std::string ExampleLog() { return ExampleBytes("## Binary logs", "## Text logs"); }

inline std::string ExampleCsv() {
  const std::string page = FormatsPage(), mark = "```csv\n";
  const std::size_t begin = page.find(mark) + mark.size();
  return page.substr(begin, page.find("```", begin) - begin);
}

// value, little-endian, as part of a log.
template <class T>
std::string Raw(T value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

// The log of the example with `with` in place of `size` bytes from `offset` on.
inline std::string Patched(std::size_t offset, std::size_t size, const std::string& with) {
  return ExampleLog().replace(offset, size, with);
}

}  // namespace vastra
