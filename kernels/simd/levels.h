// Function multiversioning. A source named *.simd.cc is compiled once for every level, each time into
// the namespace zol::ZOL_LEVEL; callers select the machine's level at run time.
//
//   blur_rows.h       ZOL_LEVELS(void blurRow(const uint8_t *src, uint8_t *dst, int width);)
//   blur_rows.simd.cc namespace zol::ZOL_LEVEL { void blurRow(...) { ... } }
//   blur.cc           const auto row = ZOL_SELECT(blurRow);
//
// A level source must not instantiate inline functions of outside headers (standard algorithms and
// containers): the linker keeps one copy of those, and it might be one that the machine cannot run.
#pragma once

#define ZOL_LEVELS(...)                                                                                      \
  namespace sse2 {                                                                                           \
  __VA_ARGS__                                                                                                \
  }                                                                                                          \
  namespace avx2 {                                                                                           \
  __VA_ARGS__                                                                                                \
  }

#define ZOL_SELECT(function)                                                                                 \
  (::zol::simdLevel() == ::zol::SimdLevel::avx2 ? &::zol::avx2::function : &::zol::sse2::function)

namespace zol {

enum class SimdLevel { sse2, avx2 };

/// The widest level of this machine, or the cap where that is lower.
SimdLevel simdLevel();

/// Caps the level from now on; tests and benchmarks compare levels within one process by it.
void capSimdLevel(SimdLevel cap);

} // namespace zol
