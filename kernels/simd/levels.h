// Function multiversioning. A source named *.simd.cc is compiled once for every level, each time into
// the namespace zol::ZOL_LEVEL; callers select the machine's level at run time.
//
//   blur_rows.h       ZOL_LEVELS(void blurRow(const uint8_t *src, uint8_t *dst, int width);)
//   blur_rows.simd.cc namespace zol::ZOL_LEVEL { void blurRow(...) { ... } }
//   blur.cc           const auto row = ZOL_SELECT(blurRow);
//
// A kernel that gains nothing from the widest levels stops below them: its source is named after the last
// level that it has, blur_rows.avx2.simd.cc, and declared ZOL_LEVELS_TO(avx2, ...). Wider levels run that.
//
// A level source must not instantiate inline functions of outside headers (standard algorithms and
// containers): the linker keeps one copy of those, and it might be one that the machine cannot run.
#pragma once

#include "kernels/simd/level_list.h"

#define ZOL_LEVEL_DECLARE(level, ...)                                                                        \
  namespace level {                                                                                          \
  __VA_ARGS__                                                                                                \
  }
#define ZOL_LEVELS_TO(level, ...) ZOL_TO_##level(ZOL_LEVEL_DECLARE, __VA_ARGS__)
#define ZOL_LEVELS(...) ZOL_EVERY_LEVEL(ZOL_LEVEL_DECLARE, __VA_ARGS__)

#define ZOL_LEVEL_ADDRESS(level, function) &::zol::level::function,
#define ZOL_SELECT(function) (::zol::formOfLevel({ZOL_EVERY_LEVEL(ZOL_LEVEL_ADDRESS, function)}))

namespace zol {

#define ZOL_LEVEL_ENUMERATOR(level, ...) level,
enum class SimdLevel { ZOL_EVERY_LEVEL(ZOL_LEVEL_ENUMERATOR, ) };
#undef ZOL_LEVEL_ENUMERATOR

#define ZOL_LEVEL_ONE(level, ...) +1
inline constexpr int kSimdLevels = ZOL_EVERY_LEVEL(ZOL_LEVEL_ONE, );
#undef ZOL_LEVEL_ONE

inline constexpr SimdLevel kWidestLevel = static_cast<SimdLevel>(kSimdLevels - 1);

/// The widest level of this machine, or the cap where that is lower.
SimdLevel simdLevel();

/// Caps the level from now on; tests and benchmarks compare levels within one process by it.
void capSimdLevel(SimdLevel cap);

constexpr const char *levelName(SimdLevel level) {
#define ZOL_LEVEL_NAME(level, ...) #level,
  constexpr const char *kNames[] = {ZOL_EVERY_LEVEL(ZOL_LEVEL_NAME, )};
#undef ZOL_LEVEL_NAME
  return kNames[static_cast<int>(level)];
}

template <class Function> Function *formOfLevel(Function *const (&forms)[kSimdLevels]) {
  return forms[static_cast<int>(simdLevel())];
}

} // namespace zol
