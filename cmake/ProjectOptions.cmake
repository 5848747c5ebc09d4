# Compiler settings that every target of this project shares: link onvif_client_options privately.
add_library(onvif_client_options INTERFACE)
target_compile_features(onvif_client_options INTERFACE cxx_std_20)
target_compile_options(onvif_client_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow
                                                      -Wconversion -Werror)
# g++ 12 takes "literal" + std::string for an overlapping copy (GCC bug 105651).
target_compile_options(onvif_client_options INTERFACE
                       $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

if(ONVIF_CLIENT_SANITIZE)
  add_compile_options(-fsanitize=${ONVIF_CLIENT_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ONVIF_CLIENT_SANITIZE})
  if(ONVIF_CLIENT_SANITIZE MATCHES "thread")
    # g++ cannot instrument Asio's stand-alone fences and warns about them.
    target_compile_definitions(onvif_client_options INTERFACE BOOST_ASIO_DISABLE_FENCED_BLOCK)
    target_compile_options(onvif_client_options INTERFACE -Wno-tsan)
  endif()
endif()
