# The page that `zol studio` serves. Debian's cpp-httplib is a library of this machine's own word size.
find_path(httplib_include httplib.h)
find_library(httplib_library NAMES cpp-httplib)
if(NOT CMAKE_SIZEOF_VOID_P EQUAL 8 OR NOT httplib_include OR NOT httplib_library)
  message(STATUS "zol studio is left out: it needs a 64-bit target and libcpp-httplib-dev")
  return()
endif()

file(GLOB studio_sources CONFIGURE_DEPENDS apps/studio/*.cc)
file(GLOB studio_page CONFIGURE_DEPENDS apps/studio/page/*)
set(studio_embedded ${CMAKE_BINARY_DIR}/studio_page.cc)
add_custom_command(OUTPUT ${studio_embedded}
  COMMAND ${CMAKE_COMMAND} -DOUTPUT=${studio_embedded} -DFOLDER=${CMAKE_SOURCE_DIR}/apps/studio/page
          -P ${CMAKE_SOURCE_DIR}/cmake/embed.cmake
  DEPENDS ${studio_page} cmake/embed.cmake)
add_library(zol_studio STATIC ${studio_sources} ${studio_embedded})
# As the library was compiled: its records depend on them.
target_compile_definitions(zol_studio PRIVATE CPPHTTPLIB_OPENSSL_SUPPORT CPPHTTPLIB_ZLIB_SUPPORT CPPHTTPLIB_BROTLI_SUPPORT)
target_link_libraries(zol_studio PRIVATE zol_shell_flags PUBLIC zol_host ${httplib_library} z)
target_link_libraries(zol PRIVATE zol_studio)
target_compile_definitions(zol PRIVATE ZOL_WITH_STUDIO)
