# The SIMD levels, from the narrowest to the widest, and what each needs of the processor. Compile rules,
# declarations, dispatch and tests follow from this.
set(ZOL_LEVELS sse2 avx2 avx512)
set(ZOL_NEEDS_sse2 sse2)
set(ZOL_NEEDS_avx2 avx2)
set(ZOL_NEEDS_avx512 avx512f avx512bw avx512dq avx512vl)

set(ZOL_LEVEL_MACROS "")
set(names "")
set(narrower "")
foreach(level IN LISTS ZOL_LEVELS)
  string(APPEND names " X(${level}, __VA_ARGS__)")
  list(TRANSFORM ZOL_NEEDS_${level} REPLACE "(.+)" "__builtin_cpu_supports(\"\\1\")" OUTPUT_VARIABLE checks)
  list(JOIN checks " && " checks)
  string(APPEND ZOL_LEVEL_MACROS "\n#define ZOL_TO_${level}(X, ...)${names}\n#define ZOL_RUNS_${level} (${checks})\n")
  if(narrower) # a kernel without a form for this level is found in the level below
    string(APPEND ZOL_LEVEL_MACROS "namespace zol::${narrower} {}\nnamespace zol::${level} { using namespace ${narrower}; }\n")
  endif()
  set(narrower ${level})
endforeach()
set(ZOL_WIDEST_LEVEL ${narrower})
configure_file(${CMAKE_SOURCE_DIR}/kernels/simd/level_list.h.in ${CMAKE_BINARY_DIR}/generated/kernels/simd/level_list.h)
include_directories(${CMAKE_BINARY_DIR}/generated)

# Compiles level sources for each of their levels and appends the objects to the list named `objects`.
function(zol_add_levels name objects options)
  foreach(level IN LISTS ZOL_LEVELS)
    if(ARGN)
      add_library(${name}_${level} OBJECT ${ARGN})
      list(TRANSFORM ZOL_NEEDS_${level} PREPEND "-m" OUTPUT_VARIABLE flags)
      target_compile_definitions(${name}_${level} PRIVATE ZOL_LEVEL=${level})
      # Lanes count modulo their width, signed ones too.
      target_compile_options(${name}_${level} PRIVATE ${options} ${flags} -Wmissing-declarations
        -fwrapv -fno-sanitize=signed-integer-overflow)
      list(APPEND ${objects} $<TARGET_OBJECTS:${name}_${level}>)
      list(FILTER ARGN EXCLUDE REGEX "\\.${level}\\.simd\\.cc$")
    endif()
  endforeach()
  set(${objects} ${${objects}} PARENT_SCOPE)
endfunction()
