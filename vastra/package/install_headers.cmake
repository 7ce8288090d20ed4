# Runs at `cmake --install`: installs HEADERS, paths in SOURCE, and every header of this project that they include,
# directly or through others, to DESTINATION. A header that no public one includes stays out.
cmake_policy(VERSION 3.25)

set(seen "")
while(HEADERS)
  list(POP_FRONT HEADERS header)
  if(header IN_LIST seen)
    continue()
  endif()
  list(APPEND seen ${header})
  cmake_path(GET header PARENT_PATH folder)
  file(INSTALL ${SOURCE}/${header} DESTINATION ${DESTINATION}/${folder})
  file(STRINGS ${SOURCE}/${header} lines REGEX "^ *# *include [\"<](vastra|host)/")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE ".*[\"<](.*)[\">].*" "\\1" included "${line}")
    list(APPEND HEADERS ${included})
  endforeach()
endwhile()
