# find_package(vastra) defines vastra::engine, the static engine, and vastra::vastra, the shared library.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/vastraTargets.cmake)
