# What a release build carries against faults that somebody could make use of. Only where this
# project is built for itself: in another build its settings decide.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()

if(MSVC)
  return()  # its own defaults are such
endif()
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
if(WIN32)
  # Links what the checks call, which is not in the C library here.
  target_link_options(onvif_client_options INTERFACE $<${release}:-fstack-protector-strong>)
  set(hardened --dynamicbase --nxcompat --high-entropy-va)
else()
  set(hardened -z,relro -z,now)
endif()
foreach(words IN LISTS hardened)
  string(MAKE_C_IDENTIFIER ONVIF_CLIENT_HAVE${words} known)
  check_linker_flag(CXX -Wl,${words} ${known})
  if(${known})
    target_link_options(onvif_client_options INTERFACE $<${release}:-Wl,${words}>)
  endif()
endforeach()
