# Installs the library: headers, CMake package and pkg-config file. All of it may be moved
# afterwards, together.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/onvif_client)

install(TARGETS onvif_client EXPORT onvif_client-targets
        LIBRARY COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE COMPONENT development
        RUNTIME COMPONENT library)
install(FILES ${PROJECT_SOURCE_DIR}/include/onvif_client/OnvifClient.h
              ${PROJECT_BINARY_DIR}/include/onvif_client/Version.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/onvif_client COMPONENT development)

# Who links the static library links what it uses, too.
get_target_property(type onvif_client TYPE)
if(type STREQUAL STATIC_LIBRARY)
  set(config_dependencies "include(CMakeFindDependencyMacro)
find_dependency(Threads)
find_dependency(tinyxml2)
find_dependency(spdlog)")
  set(pc_required tinyxml2 spdlog)
  set(pc_libraries ${CMAKE_THREAD_LIBS_INIT})
  if(WIN32)
    list(TRANSFORM ONVIF_CLIENT_SYSTEM_LIBRARIES PREPEND -l OUTPUT_VARIABLE system_libraries)
    list(APPEND pc_libraries ${system_libraries})
  else()
    string(APPEND config_dependencies "\nfind_dependency(OpenSSL COMPONENTS Crypto)")
    list(APPEND pc_required libcrypto)
  endif()
  list(JOIN pc_required " " pc_required)
  list(JOIN pc_libraries " " pc_libraries)
  set(pc_dependencies "Requires.private: ${pc_required}
Libs.private: ${pc_libraries}
Cflags.private: -DONVIF_CLIENT_STATIC
")
endif()

install(EXPORT onvif_client-targets NAMESPACE onvif_client:: DESTINATION ${package_folder}
        COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/onvif_client-config.cmake.in
  ${PROJECT_BINARY_DIR}/onvif_client-config.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/onvif_client-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/onvif_client-config.cmake
              ${PROJECT_BINARY_DIR}/onvif_client-config-version.cmake
        DESTINATION ${package_folder} COMPONENT development)

# Paths below the prefix are told by the place of the file itself.
set(pc_prefix ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" /)
  string(REGEX REPLACE "/$" "" up "${up}")
  set(pc_prefix "\${pcfiledir}/${up}")
endif()
foreach(folder includedir libdir)
  string(TOUPPER ${folder} name)
  set(pc_${folder} ${CMAKE_INSTALL_${name}})
  if(NOT IS_ABSOLUTE "${pc_${folder}}")
    string(PREPEND pc_${folder} "\${prefix}/")
  endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/onvif_client.pc.in ${PROJECT_BINARY_DIR}/onvif_client.pc
               @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/onvif_client.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
# The same for the pkg-config file of the library for C.
foreach(name prefix includedir libdir)
  set(pc_${name} ${pc_${name}} PARENT_SCOPE)
endforeach()
