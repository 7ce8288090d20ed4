# cmake -DOUT=FILE.cpp -DFILES=ADDRESS=FILE;... -P pack_page.cmake   packs the files of the page into a source
#
# The pages (.html) ask for their parts below /VERSION, the version of all files, so that a browser never has parts of
# two versions. "<!-- modules -->" in them becomes a list of all modules that main.js imports: one after the other, as they
# import each other, they would take long on a slow link. Each file is also packed by gzip.
set(types "html=text/html\\; charset=utf-8" "css=text/css\\; charset=utf-8" "js=text/javascript\\; charset=utf-8"
          "svg=image/svg+xml" "png=image/png")
set(hashes "")
foreach(one IN LISTS FILES)
  string(REGEX MATCH "^([^=]+)=(.+)$" found "${one}")
  file(SHA256 "${CMAKE_MATCH_2}" hash)
  string(APPEND hashes "${CMAKE_MATCH_1} ${hash}\n")
endforeach()
string(SHA256 version "${hashes}")
string(SUBSTRING "${version}" 0 16 version)

function(bytes_of path result)
  file(READ "${path}" hex HEX)
  string(REGEX MATCH "^1f8b08(..)........(.*)$" is_gzip "${hex}")
  if(is_gzip)  # without the time at which it was made
    set(hex "1f8b08${CMAKE_MATCH_1}00000000${CMAKE_MATCH_2}")
  endif()
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
  set(${result} "${bytes}" PARENT_SCOPE)
endfunction()

# The links to the modules that main.js, and those that it imports, import.
function(links_of_modules result)
  set(names main)
  set(links "")
  while(names)
    list(POP_FRONT names name)
    set(modules ${FILES})
    list(FILTER modules INCLUDE REGEX "^/js/${name}\\.js=")
    string(REGEX REPLACE "^[^=]+=" "" path "${modules}")
    file(READ "${path}" text)
    string(REGEX MATCHALL "from '\\./[a-z_]+" imports "${text}")
    foreach(one IN LISTS imports)
      string(REPLACE "from './" "" one "${one}")
      set(link "<link rel=\"modulepreload\" href=\"/js/${one}.js\">\n")
      string(FIND "${links}" "${link}" place)
      if(place EQUAL -1)
        string(APPEND links "${link}")
        list(APPEND names "${one}")
      endif()
    endforeach()
  endwhile()
  set(${result} "${links}" PARENT_SCOPE)
endfunction()
links_of_modules(module_links)

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
  if(ending STREQUAL html)
    file(READ "${path}" text)
    string(REPLACE "<!-- modules -->" "${module_links}" text "${text}")
    string(REGEX REPLACE "(src|href)=\"/(js|vendor|style)" "\\1=\"/${version}/\\2" text "${text}")
    set(path "${OUT}.html")
    file(WRITE "${path}" "${text}")
  endif()
  file(SHA256 "${path}" hash)
  string(SUBSTRING "${hash}" 0 16 tag)
  file(ARCHIVE_CREATE OUTPUT "${OUT}.gz" PATHS "${path}" FORMAT raw COMPRESSION GZip COMPRESSION_LEVEL 9)
  bytes_of("${path}" bytes)
  bytes_of("${OUT}.gz" zipped)
  string(APPEND texts "constexpr char kText${number}[] = {${bytes}0};\nconstexpr char kZipped${number}[] = {${zipped}0};\n")
  string(APPEND rows "    {\"${address}\", \"${media}\", {kText${number}, sizeof kText${number} - 1},\n"
                     "     {kZipped${number}, sizeof kZipped${number} - 1}, \"${tag}\"},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(REMOVE "${OUT}.html" "${OUT}.gz")
file(WRITE "${OUT}" "// Made by pack_page.cmake.
#include \"host/web/web_page.h\"

namespace vastra {
namespace {

${texts}
constexpr CPageFile kFiles[] = {
${rows}};

}  // namespace

CPackedPage PackedPage() { return {\"${version}\", kFiles}; }

}  // namespace vastra
")
