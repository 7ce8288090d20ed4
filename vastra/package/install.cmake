# What `cmake --install TREE [--component NAME]` installs. Targets that were not built are left out, so that a tree
# made by script/run can be installed.
#
#   runtime      the command vastra, the driver modules and the module for Python
#   desktop      vastra-desktop, libvastra.so and the driver modules
#   web          vastra-web
#   development  headers, libraries and the package for find_package(vastra)
include(GNUInstallDirs)
set(VASTRA_HOST_DIR lib/vastra)  # the hosts look for driver modules in their own folder

# A host goes to the folder of the driver modules; bin/ gets a link to it.
function(vastra_install_host target name component)
  install(TARGETS ${target} RUNTIME DESTINATION ${VASTRA_HOST_DIR} COMPONENT ${component} OPTIONAL)
  file(RELATIVE_PATH path ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${VASTRA_HOST_DIR}/${name})
  set(link ${PROJECT_BINARY_DIR}/links/${name})
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/links)
  file(CREATE_LINK ${path} ${link} SYMBOLIC)
  install(CODE "
    if(EXISTS \"$<TARGET_FILE:${target}>\")
      file(INSTALL \"${link}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    endif()" COMPONENT ${component})
endfunction()

install(FILES ${PROJECT_SOURCE_DIR}/python/vastra_logs.py DESTINATION ${CMAKE_INSTALL_DATADIR}/vastra/python
        COMPONENT runtime)

function(vastra_install_driver target)
  foreach(component runtime desktop)
    install(TARGETS ${target} LIBRARY DESTINATION ${VASTRA_HOST_DIR} COMPONENT ${component} OPTIONAL)
  endforeach()
endfunction()

# An external project links the library as vastra::NAME and includes HEADERS, paths in the source tree, and the
# headers of ours that these include. Those of host/ get a folder of their own below the system's headers.
function(vastra_install_library target name)
  cmake_parse_arguments(PARSE_ARGV 2 ARG "" "" "HEADERS")
  add_library(vastra::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  set(folder ${CMAKE_INSTALL_INCLUDEDIR})
  if(ARG_HEADERS MATCHES "^host/")
    set(folder ${folder}/vastra-host)
  endif()
  target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${folder}>)
  set_property(GLOBAL APPEND PROPERTY vastra_libraries ${target})
  set_property(GLOBAL APPEND PROPERTY vastra_headers ${ARG_HEADERS})
endfunction()
