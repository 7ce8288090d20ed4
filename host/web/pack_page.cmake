# cmake -DOUT=FILE.cpp -DFILES=ADDRESS=FILE;... -P pack_page.cmake   packs the files of the page into a source
set(types "html=text/html\\; charset=utf-8" "css=text/css\\; charset=utf-8" "js=text/javascript\\; charset=utf-8"
          "svg=image/svg+xml" "png=image/png")
set(texts "")
set(rows "")
set(number 0)
foreach(one IN LISTS FILES)
  string(REGEX MATCH "^([^=]+)=(.+)$" found "${one}")
  set(address "${CMAKE_MATCH_1}")
  set(path "${CMAKE_MATCH_2}")
  string(REGEX MATCH "[a-z]+$" ending "${path}")
  foreach(type IN LISTS types)
    if(type MATCHES "^${ending}=(.*)$")
      set(media "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  file(READ "${path}" hex HEX)
  file(SHA256 "${path}" hash)
  string(SUBSTRING "${hash}" 0 16 tag)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
  string(APPEND texts "constexpr char kText${number}[] = {${bytes}0};\n")
  string(APPEND rows "    {\"${address}\", \"${media}\", {kText${number}, sizeof kText${number} - 1}, \"\\\"${tag}\\\"\"},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${OUT}" "// Made by pack_page.cmake.
#include \"host/web/web_page.h\"

namespace vastra {
namespace {

${texts}
constexpr CPageFile kFiles[] = {
${rows}};

}  // namespace

std::span<const CPageFile> PageFiles() { return kFiles; }

}  // namespace vastra
")
