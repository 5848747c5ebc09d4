# The Debian packages: library, what is needed to build with it, programs.
find_program(GZIP gzip)

# Man pages and completion belong to the programs that are built.
foreach(program IN LISTS programs)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/man/${program}.1.in
                 ${PROJECT_BINARY_DIR}/man/${program}.1 @ONLY)
  set(page ${PROJECT_BINARY_DIR}/man/${program}.1)
  if(GZIP)
    execute_process(COMMAND ${GZIP} -9nfk ${page} COMMAND_ERROR_IS_FATAL ANY)
    string(APPEND page .gz)
  endif()
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/completion/onvif_client.bash RENAME ${program}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME onvif-client)
set(CPACK_PACKAGE_CONTACT "onvif_client maintainers <maintainers@localhost>")
set(CPACK_PACKAGE_VENDOR "onvif_client maintainers")
# Each package has its own; this one would stand above it.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL library development)
if(programs)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# dpkg-shlibdeps looks for the project's own library here; the dependency on it stands below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})

set(library_package libonvif-client${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "ONVIF client library
A library that a video management application loads to work with IP cameras
and recorders over ONVIF: it logs in to devices, asks and changes their
settings in a small XML command language, fetches pictures and listens for
alarms.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libonvif-client-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "ONVIF client library - headers
What is needed to build programs with the ONVIF client library: headers, a
CMake package and a pkg-config file.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME onvifctl)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION video)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "asks and changes ONVIF devices, and simulates one
onvifctl asks and changes IP cameras and recorders over ONVIF from the command
line: settings, pictures, stream addresses, domes, alarms. onvif-camera-sim
plays the camera, for trials without one.")
