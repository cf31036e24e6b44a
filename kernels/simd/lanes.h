// Integer vectors for level sources: 16 bytes at sse2, 32 at avx2, where an operation that moves data
// between lanes works on each 16-byte half by itself. Each level has functions of its own.
#pragma once

#include <cstdint>
#include <immintrin.h>

namespace zol::ZOL_LEVEL {

#ifdef __AVX2__
using Lanes = __m256i;
#define ZOL_LANES(operation) _mm256_##operation
#define ZOL_LANES_WHOLE(operation) _mm256_##operation##_si256
#else
using Lanes = __m128i;
#define ZOL_LANES(operation) _mm_##operation
#define ZOL_LANES_WHOLE(operation) _mm_##operation##_si128
#endif

inline Lanes zeros() { return ZOL_LANES_WHOLE(setzero)(); }
inline Lanes all8(int value) { return ZOL_LANES(set1_epi8)(static_cast<char>(value)); }
inline Lanes all16(int value) { return ZOL_LANES(set1_epi16)(static_cast<short>(value)); }
inline Lanes all32(int value) { return ZOL_LANES(set1_epi32)(value); }

inline Lanes load(const void *from) { return ZOL_LANES_WHOLE(loadu)(static_cast<const Lanes *>(from)); }
inline void store(void *to, Lanes v) { ZOL_LANES_WHOLE(storeu)(static_cast<Lanes *>(to), v); }

/// The 16-byte halves from and to places of their own; at sse2 there is the low one alone.
inline Lanes loadHalves(const void *low, [[maybe_unused]] const void *high) {
  const __m128i first = _mm_loadu_si128(static_cast<const __m128i *>(low));
#ifdef __AVX2__
  const __m128i second = _mm_loadu_si128(static_cast<const __m128i *>(high));
  return _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
#else
  return first;
#endif
}
inline void storeHalves(void *low, [[maybe_unused]] void *high, Lanes v) {
#ifdef __AVX2__
  _mm_storeu_si128(static_cast<__m128i *>(low), _mm256_castsi256_si128(v));
  _mm_storeu_si128(static_cast<__m128i *>(high), _mm256_extracti128_si256(v, 1));
#else
  _mm_storeu_si128(static_cast<__m128i *>(low), v);
#endif
}

inline Lanes bitAnd(Lanes a, Lanes b) { return ZOL_LANES_WHOLE(and)(a, b); }
inline Lanes bitOr(Lanes a, Lanes b) { return ZOL_LANES_WHOLE(or)(a, b); }
inline Lanes bitXor(Lanes a, Lanes b) { return ZOL_LANES_WHOLE(xor)(a, b); }
/// b where the mask's bits are 0.
inline Lanes bitAndNot(Lanes mask, Lanes b) { return ZOL_LANES_WHOLE(andnot)(mask, b); }

inline Lanes interleaveLow8(Lanes a, Lanes b) { return ZOL_LANES(unpacklo_epi8)(a, b); }
inline Lanes interleaveHigh8(Lanes a, Lanes b) { return ZOL_LANES(unpackhi_epi8)(a, b); }
inline Lanes interleaveLow32(Lanes a, Lanes b) { return ZOL_LANES(unpacklo_epi32)(a, b); }
inline Lanes interleaveHigh32(Lanes a, Lanes b) { return ZOL_LANES(unpackhi_epi32)(a, b); }
/// 16-bit lanes to bytes, limited to 0..255.
inline Lanes pack8(Lanes low, Lanes high) { return ZOL_LANES(packus_epi16)(low, high); }

inline Lanes sub8(Lanes a, Lanes b) { return ZOL_LANES(sub_epi8)(a, b); }
/// (a + b + 1) >> 1 of bytes.
inline Lanes average8(Lanes a, Lanes b) { return ZOL_LANES(avg_epu8)(a, b); }

inline Lanes add16(Lanes a, Lanes b) { return ZOL_LANES(add_epi16)(a, b); }
inline Lanes sub16(Lanes a, Lanes b) { return ZOL_LANES(sub_epi16)(a, b); }
/// -1 where a > b, signed.
inline Lanes greater16(Lanes a, Lanes b) { return ZOL_LANES(cmpgt_epi16)(a, b); }
inline Lanes mulLow16(Lanes a, Lanes b) { return ZOL_LANES(mullo_epi16)(a, b); }
inline Lanes mulHigh16(Lanes a, Lanes b) { return ZOL_LANES(mulhi_epi16)(a, b); }
inline Lanes mulHighUnsigned16(Lanes a, Lanes b) { return ZOL_LANES(mulhi_epu16)(a, b); }
template <int kBits> Lanes shiftRight16(Lanes v) { return ZOL_LANES(srli_epi16)(v, kBits); }

inline Lanes add32(Lanes a, Lanes b) { return ZOL_LANES(add_epi32)(a, b); }
inline Lanes sub32(Lanes a, Lanes b) { return ZOL_LANES(sub_epi32)(a, b); }
/// -1 where a > b, signed.
inline Lanes greater32(Lanes a, Lanes b) { return ZOL_LANES(cmpgt_epi32)(a, b); }
template <int kBits> Lanes shiftLeft32(Lanes v) { return ZOL_LANES(slli_epi32)(v, kBits); }
/// Sums of neighbouring products of signed 16-bit lanes, in 32 bits.
inline Lanes mulAdd16(Lanes a, Lanes b) { return ZOL_LANES(madd_epi16)(a, b); }

/// The lanes 0 and 2, or 1 and 3, of a and then of b.
inline Lanes evens32(Lanes a, Lanes b) {
#ifdef __AVX2__
  return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), 0x88));
#else
  return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), 0x88));
#endif
}
inline Lanes odds32(Lanes a, Lanes b) {
#ifdef __AVX2__
  return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), 0xDD));
#else
  return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), 0xDD));
#endif
}

#undef ZOL_LANES
#undef ZOL_LANES_WHOLE

} // namespace zol::ZOL_LEVEL
