# find_package(vastra): vastra::engine is the static engine, vastra::vastra the dynamic library.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/vastraTargets.cmake)
