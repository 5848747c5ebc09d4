# What is built, and the settings that the targets of this project share.
include(CMakeDependentOption)
include(CheckLinkerFlag)
include(GNUInstallDirs)

option(ONVIF_CLIENT_TOOL "Build onvifctl" ${PROJECT_IS_TOP_LEVEL})
option(ONVIF_CLIENT_SIMULATOR "Build onvif-camera-sim" ${PROJECT_IS_TOP_LEVEL})
option(ONVIF_CLIENT_BINDINGS "Build the library for C and other languages" ${PROJECT_IS_TOP_LEVEL})
option(ONVIF_CLIENT_EXAMPLES "Build the examples" ${PROJECT_IS_TOP_LEVEL})
cmake_dependent_option(ONVIF_CLIENT_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL}
                       "ONVIF_CLIENT_TOOL;ONVIF_CLIENT_SIMULATOR" OFF)
cmake_dependent_option(ONVIF_CLIENT_BENCH "Build the benchmarks" ${PROJECT_IS_TOP_LEVEL}
                       "ONVIF_CLIENT_SIMULATOR" OFF)
option(ONVIF_CLIENT_INSTALL "Install what is built" ${PROJECT_IS_TOP_LEVEL})
option(ONVIF_CLIENT_WERROR "Take warnings for errors" OFF)
option(ONVIF_CLIENT_FAST_BUILD "Precompile what most files include, join files of the tool"
       ${PROJECT_IS_TOP_LEVEL})
option(ONVIF_CLIENT_FUZZ "Build the libFuzzer targets (needs clang)" OFF)
set(ONVIF_CLIENT_SANITIZE "" CACHE STRING "Value of -fsanitize=, empty for none")
if(PROJECT_IS_TOP_LEVEL)
  option(BUILD_SHARED_LIBS "Build a shared library, not a static one" ON)
endif()

# Compiler settings that every target of this project shares: link onvif_client_options privately.
add_library(onvif_client_options INTERFACE)
target_compile_features(onvif_client_options INTERFACE cxx_std_20)
if(MSVC)
  target_compile_options(onvif_client_options INTERFACE /W4 /permissive- /utf-8)
else()
  target_compile_options(onvif_client_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow
                                                        -Wconversion)
endif()
# g++ 12 takes "literal" + std::string for an overlapping copy (GCC bug 105651).
target_compile_options(onvif_client_options INTERFACE
                       $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(ONVIF_CLIENT_WERROR)
  target_compile_options(onvif_client_options INTERFACE $<IF:$<BOOL:${MSVC}>,/WX,-Werror>)
endif()

if(WIN32)
  target_compile_definitions(onvif_client_options INTERFACE
    _WIN32_WINNT=0x0A00 WIN32_LEAN_AND_MEAN NOMINMAX UNICODE _UNICODE)
endif()

if(ONVIF_CLIENT_SANITIZE)
  add_compile_options(-fsanitize=${ONVIF_CLIENT_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ONVIF_CLIENT_SANITIZE})
  if(ONVIF_CLIENT_SANITIZE MATCHES "thread")
    # g++ cannot instrument Asio's stand-alone fences and warns about them.
    target_compile_definitions(onvif_client_options INTERFACE BOOST_ASIO_DISABLE_FENCED_BLOCK)
    target_compile_options(onvif_client_options INTERFACE -Wno-tsan)
  endif()
endif()

if(PROJECT_IS_TOP_LEVEL AND NOT ONVIF_CLIENT_SANITIZE)
  include(${CMAKE_CURRENT_LIST_DIR}/Hardening.cmake)
endif()

# Where the linker makes ELF files, it knows these; elsewhere the library does without.
if(NOT WIN32)
  check_linker_flag(CXX -Wl,-z,nodelete ONVIF_CLIENT_HAVE_NODELETE)
  check_linker_flag(CXX "-Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map"
                    ONVIF_CLIENT_HAVE_VERSION_SCRIPT)
endif()

# onvif_client_target(TARGET): the settings that are properties, for the library and the programs.
function(onvif_client_target target)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
endfunction()

# onvif_client_precompile(TARGET HEADERS...): those of the standard library that most files include,
# and HEADERS. A file still includes what it uses: without ONVIF_CLIENT_FAST_BUILD it has to.
function(onvif_client_precompile target)
  if(ONVIF_CLIENT_FAST_BUILD)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <atomic> <charconv> <chrono> <condition_variable> <cstdint> <cstdio>
      <cstring> <deque> <functional> <iterator> <map> <memory> <mutex> <optional> <span> <string>
      <string_view> <thread> <utility> <vector> ${ARGN})
  endif()
endfunction()

# onvif_client_program(TARGET): a program that is installed. It finds the library from where it
# stands, whatever the prefix.
function(onvif_client_program target)
  onvif_client_target(${target})
  if(NOT ONVIF_CLIENT_INSTALL)
    return()
  endif()
  get_target_property(libraries ${target} LINK_LIBRARIES)
  if(BUILD_SHARED_LIBS AND UNIX AND NOT APPLE AND onvif_client IN_LIST libraries)
    file(RELATIVE_PATH folder ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${folder}")
  endif()
  install(TARGETS ${target} RUNTIME COMPONENT tools)
endfunction()
