// The files of the page, which the build packs into the program.
#pragma once

#include <span>
#include <string_view>

namespace vastra {

struct CPageFile {
  std::string_view path;  // of its address, such as "/js/chart.js"
  std::string_view type, text;
  std::string_view tag;  // changes with the text
};

std::span<const CPageFile> PageFiles();

}  // namespace vastra
