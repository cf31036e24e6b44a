# Flags as targets: a target of ours links what it needs of these; those of others (gtest) link none.

# The same bytes on every target: SSE2 arithmetic, no contraction.
add_library(zol_exact INTERFACE)
target_compile_options(zol_exact INTERFACE -msse2 -mfpmath=sse -ffp-contract=off)

# The presets make errors of them (CMAKE_COMPILE_WARNING_AS_ERROR).
add_library(zol_warnings INTERFACE)
target_compile_options(zol_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wno-psabi)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(zol_warnings INTERFACE -Wno-restrict) # false alarms on std::string in GCC 12
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(zol_warnings INTERFACE -Wno-unused-command-line-argument -Wno-gnu-zero-variadic-macro-arguments)
endif()

add_library(zol_flags INTERFACE)
target_link_libraries(zol_flags INTERFACE zol_exact zol_warnings)

# What goes into the effects library: nothing is seen from outside that is not exported by name.
add_library(zol_library_flags INTERFACE)
target_link_libraries(zol_library_flags INTERFACE zol_flags)
target_compile_options(zol_library_flags INTERFACE -fvisibility=hidden -fvisibility-inlines-hidden
  -fno-exceptions -fno-math-errno -fno-trapping-math)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_options(zol_library_flags INTERFACE -mstackrealign) # hosts of this target may call with a stack aligned to 4
endif()

# Code around the kernels: its time goes into files and processes, the builder's into optimising it.
add_library(zol_shell_flags INTERFACE)
target_link_libraries(zol_shell_flags INTERFACE zol_flags)
target_compile_options(zol_shell_flags INTERFACE $<$<CONFIG:Release>:-O2>)

# ccache takes nothing that includes a precompiled header.
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()
set(zol_common_headers <algorithm> <array> <chrono> <cmath> <cstdio> <cstring> <deque> <functional> <map> <memory>
  <optional> <span> <stdexcept> <string> <string_view> <utility> <vector>)
