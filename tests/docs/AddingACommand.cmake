# docs/adding-a-command.md, followed: its blocks put into copies of the files that it names, these
# compiled, and the unit tests among them run. Built by a test of its own, so that a page that went
# stale fails that and not the build.
set(copies ${CMAKE_CURRENT_BINARY_DIR}/adding-a-command)
set(files
  src/commands/CommandTable.cpp src/commands/DeviceRequests.cpp src/commands/DeviceRequests.h
  src/transform/DeviceResults.cpp src/transform/DeviceResults.h tests/unit/CommandTableTest.cpp
  tests/unit/RequestBuildersTest.cpp tests/unit/ResultsTest.cpp docs/commands.md)
list(TRANSFORM files PREPEND ${copies}/ OUTPUT_VARIABLE copied)
list(TRANSFORM files PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE originals)
add_custom_command(
  OUTPUT ${copied}
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/docs/apply-page ${PROJECT_SOURCE_DIR} ${copies} ${files}
  DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/docs/apply-page
          ${PROJECT_SOURCE_DIR}/docs/adding-a-command.md ${originals}
  COMMENT "Following docs/adding-a-command.md")

add_executable(adding_a_command EXCLUDE_FROM_ALL ${copied})
target_include_directories(adding_a_command BEFORE PRIVATE ${copies}/src ${copies}/tests
                                                           ${PROJECT_SOURCE_DIR}/tests)
target_compile_definitions(adding_a_command PRIVATE DOCUMENTS_FOLDER="${copies}/docs")
target_link_libraries(adding_a_command PRIVATE onvif_client_core onvif_client_options GTest::gtest
                                               GTest::gtest_main)
add_test(NAME adding-a-command.compiles
         COMMAND ${CMAKE_COMMAND} --build ${PROJECT_BINARY_DIR} --target adding_a_command)
add_test(NAME adding-a-command.passes COMMAND adding_a_command --gtest_brief=1)
set_tests_properties(adding-a-command.compiles PROPERTIES FIXTURES_SETUP adding-a-command)
set_tests_properties(adding-a-command.passes PROPERTIES FIXTURES_REQUIRED adding-a-command)
