// The vector operations of the level sources: unsigned bytes and 16-bit lanes at the level's width.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace zol::ZOL_LEVEL {

#ifdef __AVX2__
using V = __m256i;
#define ZOL_V(name) _mm256_##name
inline V load(const void *p) { return _mm256_loadu_si256(static_cast<const __m256i_u *>(p)); }
inline void store(void *p, V v) { _mm256_storeu_si256(static_cast<__m256i_u *>(p), v); }
inline V zero() { return _mm256_setzero_si256(); }
inline V either(V a, V b) { return _mm256_or_si256(a, b); }
#else
using V = __m128i;
#define ZOL_V(name) _mm_##name
inline V load(const void *p) { return _mm_loadu_si128(static_cast<const __m128i_u *>(p)); }
inline void store(void *p, V v) { _mm_storeu_si128(static_cast<__m128i_u *>(p), v); }
inline V zero() { return _mm_setzero_si128(); }
inline V either(V a, V b) { return _mm_or_si128(a, b); }
#endif

constexpr int kVectorBytes = sizeof(V);
constexpr int kLanes = kVectorBytes / 2;

inline V set16(int16_t value) { return ZOL_V(set1_epi16)(value); }
inline V add16(V a, V b) { return ZOL_V(add_epi16)(a, b); }
inline V sub16(V a, V b) { return ZOL_V(sub_epi16)(a, b); }
inline V mulHigh16(V a, V b) { return ZOL_V(mulhi_epi16)(a, b); }
inline V addSaturated16(V a, V b) { return ZOL_V(adds_epi16)(a, b); }
inline V min16(V a, V b) { return ZOL_V(min_epi16)(a, b); }
inline V greater16(V a, V b) { return ZOL_V(cmpgt_epi16)(a, b); }
inline V shiftRight16(V v, int bits) { return ZOL_V(srl_epi16)(v, _mm_cvtsi32_si128(bits)); }
inline V square16(V a) { return ZOL_V(mullo_epi16)(a, a); }
inline V difference16(V a, V b) { return either(ZOL_V(subs_epu16)(a, b), ZOL_V(subs_epu16)(b, a)); }
inline V difference8(V a, V b) { return either(ZOL_V(subs_epu8)(a, b), ZOL_V(subs_epu8)(b, a)); }

// Bytes widened to 16 bits, from the lower and the upper half of every 128 bits; packBytes undoes it.
inline V lowBytes(V v) { return ZOL_V(unpacklo_epi8)(v, zero()); }
inline V highBytes(V v) { return ZOL_V(unpackhi_epi8)(v, zero()); }
inline V packBytes(V low, V high) { return ZOL_V(packus_epi16)(low, high); }

/// The squares of 16-bit lanes, added in pairs to 32 bits.
inline V squarePairs(V v) { return ZOL_V(madd_epi16)(v, v); }
inline V add32(V a, V b) { return ZOL_V(add_epi32)(a, b); }

/// The sum of the 32-bit lanes.
inline uint32_t sum32(V v) {
#ifdef __AVX2__
  __m128i s = _mm_add_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
#else
  __m128i s = v;
#endif
  s = _mm_add_epi32(s, _mm_shuffle_epi32(s, 0x4E));
  s = _mm_add_epi32(s, _mm_shuffle_epi32(s, 0xB1));
  return static_cast<uint32_t>(_mm_cvtsi128_si32(s));
}

/// Two bits a 16-bit lane, from the lowest lane up.
inline uint32_t laneMask(V v) { return static_cast<uint32_t>(ZOL_V(movemask_epi8)(v)); }

#undef ZOL_V

} // namespace zol::ZOL_LEVEL
