// Vectors of pixels for the keyers' level sources: tables looked up, one pixel laid on another.
#pragma once

#include "frame/zol.h"
#include "kernels/keying/laying.h"

#include <immintrin.h>

namespace zol::ZOL_LEVEL {
namespace {

#ifdef __AVX2__
constexpr int kLanes = 8;
#define ZOL_OF_BOTH(operation, a, b) _mm256_##operation((__m256i)(a), (__m256i)(b))
#else
constexpr int kLanes = 4;
#define ZOL_OF_BOTH(operation, a, b) _mm_##operation((__m128i)(a), (__m128i)(b))
#endif

using Words = uint32_t __attribute__((vector_size(4 * kLanes)));  // a pixel each, 0xAARRGGBB
using Halves = uint16_t __attribute__((vector_size(4 * kLanes))); // two channels of a pixel each

/// `count` pixels, the remaining lanes zero.
inline Words load(const _color_t *from, int count) {
  Words words{};
  __builtin_memcpy(&words, from, sizeof(_color_t) * static_cast<size_t>(count));
  return words;
}

inline void store(_color_t *to, Words words, int count) {
  __builtin_memcpy(to, &words, sizeof(_color_t) * static_cast<size_t>(count));
}

inline Words maxBytes(Words a, Words b) { return (Words)ZOL_OF_BOTH(max_epu8, a, b); }
inline Words minBytes(Words a, Words b) { return (Words)ZOL_OF_BOTH(min_epu8, a, b); }
/// Byte for byte |a - b|.
inline Words byteDistances(Words a, Words b) {
  return (Words)ZOL_OF_BOTH(subs_epu8, a, b) | (Words)ZOL_OF_BOTH(subs_epu8, b, a);
}

/// The entries of a table that the numbers name.
inline Words lookUp(const Laying *table, Words numbers) {
  Words entries;
  for (int i = 0; i < kLanes; ++i)
    entries[i] = table[numbers[i]];
  return entries;
}

/// Each lower half in both halves.
inline Halves lowerInBoth(Words words) {
  const auto halves = (Halves)words;
#ifdef __AVX2__
  return __builtin_shufflevector(halves, halves, 0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12, 12, 14, 14);
#else
  return __builtin_shufflevector(halves, halves, 0, 0, 2, 2, 4, 4, 6, 6);
#endif
}

/// lower + floor((upper - lower) x weight / 4096): the high half of the product of the weight and the
/// difference times 16, which is within +-4080.
inline Halves weighted(Halves lower, Halves upper, Halves weight) {
  return lower + (Halves)ZOL_OF_BOTH(mulhi_epi16, (upper - lower) << 4, weight);
}

/// The alpha of `upper` must be 0.
inline Words layOn(Words lower, Words upper, Words layings) {
  const Halves weight = lowerInBoth(layings);
  const Words lowerBlueRed = lower & 0x00FF00FF;
  const Words upperBlueRed = upper & 0x00FF00FF;
  const auto blueRed = (Words)weighted((Halves)lowerBlueRed, (Halves)upperBlueRed, weight);
  const auto green = (Words)weighted((Halves)(lower & 0x0000FFFF) >> 8, (Halves)upper >> 8, weight);
  return blueRed | green << 8 | (layings & 0xFF000000);
}

/// Runs step(i, pixels) from left to right over a row, a whole vector of pixels at a time and then the rest.
template <class Step> inline void forEachVector(int width, Step step) {
  int i = 0;
  for (; i + kLanes <= width; i += kLanes)
    step(i, kLanes);
  if (i < width)
    step(i, width - i);
}

#undef ZOL_OF_BOTH

} // namespace
} // namespace zol::ZOL_LEVEL
