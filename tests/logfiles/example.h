// The worked examples of docs/file-formats.md: their bytes and text, read from the page itself.
#pragma once

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>

#include "tests/support/files.h"

namespace vastra {

inline std::string FormatsPage() { return ReadBytes(VASTRA_DOCS "/file-formats.md"); }

// The bytes of the table between two headings of a page. Each row states the offset of its field.
inline std::string ExampleBytes(const char* from, const char* to, const std::string& page = FormatsPage()) {
  static const std::regex kRow(R"(\| (\d+) \| ((?:[0-9A-F]{2} )+)\|)");
  const std::string text = page.substr(page.find(from), page.find(to) - page.find(from));
  std::string log;
  for (std::sregex_iterator row(text.begin(), text.end(), kRow), end; row != end; ++row) {
    EXPECT_EQ(log.size(), std::stoul((*row)[1])) << row->str();
    std::istringstream bytes((*row)[2]);
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

template <class T>
std::string Raw(T value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

}  // namespace vastra
