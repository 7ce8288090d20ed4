# find_package(vastra) defines vastra::engine, the static engine, vastra::vastra, the shared library, and vastra::host,
# a run of a configuration, which needs one of the two.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/vastraTargets.cmake)
