// The files of the page, which the build packs into the program.
#pragma once

#include <span>
#include <string_view>

namespace vastra {

struct CPageFile {
  std::string_view path;                // of its address, such as "/js/chart.js"
  std::string_view type, text, zipped;  // zipped: the text in gzip
  std::string_view tag;                 // changes with the text
};

struct CPackedPage {
  // Changes with any of the files. The page asks for its parts below /VERSION, so that parts of two versions
  // never come together.
  std::string_view version;
  std::span<const CPageFile> files;
};
CPackedPage PackedPage();

}  // namespace vastra
