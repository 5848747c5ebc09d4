# What a release build carries against faults that somebody could make use of. Only where this
# project is built for itself: in another build its settings decide.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()

set(release $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
target_compile_options(onvif_client_options INTERFACE
  "$<${release}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-D_GLIBCXX_ASSERTIONS>")
# Behind these checks g++ 12 sees strings of half the memory; the presets without them look, too.
target_compile_options(onvif_client_options INTERFACE
  "$<$<AND:$<CXX_COMPILER_ID:GNU>,${release}>:-Wno-array-bounds;-Wno-stringop-overflow>")
check_cxx_compiler_flag(-fstack-protector-strong ONVIF_CLIENT_HAVE_STACK_PROTECTOR)
if(ONVIF_CLIENT_HAVE_STACK_PROTECTOR)
  target_compile_options(onvif_client_options INTERFACE $<${release}:-fstack-protector-strong>)
endif()
foreach(word relro now)
  check_linker_flag(CXX -Wl,-z,${word} ONVIF_CLIENT_HAVE_Z_${word})
  if(ONVIF_CLIENT_HAVE_Z_${word})
    target_link_options(onvif_client_options INTERFACE $<${release}:-Wl,-z,${word}>)
  endif()
endforeach()
