# The Debian packages: library, what is needed to build with it, programs.
find_package(Python3 COMPONENTS Interpreter)

# Man pages and completion belong to the programs that are built: both come from what these say.
set(manual ${PROJECT_SOURCE_DIR}/packaging/man/make-manual)
foreach(program IN LISTS programs)
  if(Python3_Interpreter_FOUND)
    set(template ${PROJECT_SOURCE_DIR}/packaging/man/${program}.1.in)
    set(folder ${PROJECT_BINARY_DIR}/man/${program})
    add_custom_command(OUTPUT ${folder}.stamp
      COMMAND ${Python3_EXECUTABLE} ${manual}
              $<TARGET_FILE:${program}> ${template} ${PROJECT_VERSION} ${folder}
      COMMAND ${CMAKE_COMMAND} -E touch ${folder}.stamp
      DEPENDS ${program} ${template} ${manual} VERBATIM)
    add_custom_target(${program}-manual ALL DEPENDS ${folder}.stamp)
    install(DIRECTORY ${folder}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools
            FILES_MATCHING PATTERN *.1.gz)
  else()
    message(WARNING "No python3: ${program} is installed without man pages")
  endif()
endforeach()
if(TARGET onvif-camera-sim)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/completion/onvif-camera-sim.bash
          RENAME onvif-camera-sim
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
endif()
if(TARGET onvifctl)
  # Shell, where it looks for what others have installed, and the name that it wants there.
  set(completion ${PROJECT_BINARY_DIR}/completion)
  foreach(row bash|bash-completion/completions|onvifctl zsh|zsh/vendor-completions|_onvifctl
              fish|fish/vendor_completions.d|onvifctl.fish)
    string(REPLACE "|" ";" row ${row})
    list(GET row 0 shell)
    list(GET row 1 place)
    list(GET row 2 name)
    add_custom_command(OUTPUT ${completion}/${shell}/${name}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${completion}/${shell}
      COMMAND onvifctl completion ${shell} > ${completion}/${shell}/${name}
      DEPENDS onvifctl VERBATIM)
    list(APPEND completions ${completion}/${shell}/${name})
    install(FILES ${completion}/${shell}/${name}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/${place} COMPONENT tools)
  endforeach()
  add_custom_target(onvifctl-completion ALL DEPENDS ${completions})
endif()

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
if(ONVIF_CLIENT_BINDINGS)
  list(APPEND CPACK_COMPONENTS_ALL c python)
  # Where Debian's own Python looks, whatever is built; no part of other installations.
  set(python ${PROJECT_SOURCE_DIR}/bindings/python/onvif_client)
  file(GLOB modules CONFIGURE_DEPENDS ${python}/*.py)
  install(FILES ${modules} ${python}/py.typed ${PROJECT_SOURCE_DIR}/docs/result-shapes.json
          DESTINATION lib/python3/dist-packages/onvif_client COMPONENT python EXCLUDE_FROM_ALL)
endif()
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

set(c_package libonvif-client-c1)
set(CPACK_DEBIAN_C_PACKAGE_NAME ${c_package})
set(CPACK_DEBIAN_C_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_C_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_C_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers)
set(CPACK_DEBIAN_C_DESCRIPTION "ONVIF client library - interface for C
The functions of the ONVIF client library under plain names, for programs in C
and in all languages that call C.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-onvif-client)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "python3 (>= 3.9), ${c_package} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "ONVIF client library - Python
Talk to IP cameras and recorders over ONVIF: commands, pictures and alarms, with
threads or asyncio.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libonvif-client-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
if(ONVIF_CLIENT_BINDINGS)
  string(APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ", ${c_package} (= ${PROJECT_VERSION})")
endif()
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
