# What is installed beside the library and the programs, and the packages of it all: the root's
# ./package makes them.
set(programs)
foreach(program onvifctl onvif-camera-sim)
  if(TARGET ${program})
    list(APPEND programs ${program})
  endif()
endforeach()

if(WIN32)
  include(${CMAKE_CURRENT_LIST_DIR}/windows/Packages.cmake)
else()
  include(${CMAKE_CURRENT_LIST_DIR}/debian/Packages.cmake)
endif()
include(CPack)
