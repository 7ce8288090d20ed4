# What the tidy preset makes of compiling: clang-tidy looks at a source, with the warnings of clang among its own, and
# writes down what the source includes, so that it is looked at again when one of these changes. No code is made, and
# what would be linked is an empty file.
#
# Eight sources at a time are looked at, in a file that includes them, since most of the time goes into the headers
# that they share. The analyzer only follows such a file into its sources when "UnifiedSource" is in its path.
cmake_path(GET PROJECT_SOURCE_DIR PARENT_PATH beside)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/UnifiedSource${beside})
file(CREATE_LINK ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/UnifiedSource${PROJECT_SOURCE_DIR} SYMBOLIC)

set(CMAKE_DEPFILE_FLAGS_CXX "-Wp,-MD,<DEP_FILE>")  # clang-tidy takes away a plain -MD
set(look clang-tidy --quiet --checks=-bugprone-suspicious-include UnifiedSource<SOURCE>
         -- <DEFINES> <INCLUDES> <FLAGS> -fno-caret-diagnostics)
list(JOIN look " " look)
set(CMAKE_CXX_COMPILE_OBJECT ${look} "<CMAKE_COMMAND> -E touch <OBJECT>")
foreach(rule CREATE_SHARED_LIBRARY CREATE_SHARED_MODULE CREATE_STATIC_LIBRARY LINK_EXECUTABLE)
  set(CMAKE_CXX_${rule} "<CMAKE_COMMAND> -E touch <TARGET>")
endforeach()
