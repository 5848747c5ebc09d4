# One archive with everything for Windows. What the DLL and the programs have of other libraries is
# in them; the licenses of these are beside them.
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
              ${PROJECT_SOURCE_DIR}/SECURITY.md
        DESTINATION . COMPONENT library)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION . COMPONENT library)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/onvif_client.def DESTINATION lib COMPONENT development)
if(ONVIF_CLIENT_BINDINGS)
  install(FILES ${PROJECT_SOURCE_DIR}/bindings/c/onvif_client_c.def DESTINATION lib
          COMPONENT development)
endif()
if(EXISTS ${PROJECT_SOURCE_DIR}/build/windows-deps/licenses)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/build/windows-deps/licenses DESTINATION .
          COMPONENT library)
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME onvif_client)
set(CPACK_PACKAGE_FILE_NAME onvif_client-${PROJECT_VERSION}-windows-x86_64)
set(CPACK_STRIP_FILES ON)
