// Vectors as wide as the level, for level sources.
//
// Arithmetic, comparisons, bits, shifts and ?: are the compiler's own: lane by lane, integers modulo their
// width, a constant beside a vector in every lane. A comparison gives a mask, all bits of a lane set where it
// holds; ! of one holds for what is not a number, too. The functions here are what has no sign of its own.
//
// "Block by block" operations move data between lanes within every 16 bytes; low and high are the halves of
// each block. What one of them takes apart another puts together in the same order.
#pragma once

#include <cstddef>
#include <cstdint>
#pragma GCC diagnostic push // GCC 12's own "undefined" vectors of 512 bits
#pragma GCC diagnostic ignored "-Wuninitialized"
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#pragma GCC diagnostic pop
#include <type_traits>
#include <utility>

namespace zol::ZOL_LEVEL {
namespace {

#if defined(__AVX512BW__)
constexpr int kVectorBytes = 64;
using Register = __m512i;
#define ZOL_V(operation) _mm512_##operation
#elif defined(__AVX2__)
constexpr int kVectorBytes = 32;
using Register = __m256i;
#define ZOL_V(operation) _mm256_##operation
#else
constexpr int kVectorBytes = 16;
using Register = __m128i;
#define ZOL_V(operation) _mm_##operation
#endif
constexpr int kBlocks = kVectorBytes / 16;

// ---- Types ----

template <class Lane, int count> struct VectorOf {
  using Type [[gnu::vector_size(count * sizeof(Lane))]] = Lane;
};
template <class Lane, int count> using Vector = typename VectorOf<Lane, count>::Type;
template <class Lane> using FullVector = Vector<Lane, kVectorBytes / static_cast<int>(sizeof(Lane))>;

using U8xN = FullVector<uint8_t>;
using I8xN = FullVector<int8_t>;
using U16xN = FullVector<uint16_t>;
using I16xN = FullVector<int16_t>;
using U32xN = FullVector<uint32_t>; // of pixels: 0xAARRGGBB
using I32xN = FullVector<int32_t>;
using U64xN = FullVector<uint64_t>;
using I64xN = FullVector<int64_t>;
using F32xN = FullVector<float>;
using F64xN = FullVector<double>;
using U8x16 = Vector<uint8_t, 16>;

template <class Vec> using LaneOf = std::remove_cvref_t<decltype(Vec{}[0])>;
template <class Vec> constexpr int kLanes = sizeof(Vec) / sizeof(LaneOf<Vec>);

/// The same bits as lanes of another kind.
template <class To, class From> inline To as(From v) {
  static_assert(sizeof(To) == sizeof(From));
  return reinterpret_cast<To>(v);
}

/// The same numbers, lane for lane, in lanes of another kind: wrapped from wider integers, truncated from
/// floats. The vectors may differ in size.
template <class To, class From> inline To convert(From v) { return __builtin_convertvector(v, To); }

/// One number in every lane. (Less zero it stays itself, -0.0 too.)
template <class Vec> inline Vec splat(LaneOf<Vec> value) { return value - Vec{}; }

// ---- Memory ----

template <class Vec> inline Vec load(const void *from) {
  Vec v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}
template <class Vec> inline void store(void *to, Vec v) { __builtin_memcpy(to, &v, sizeof v); }

/// The first `count` lanes alone, those behind them 0. Nothing behind them is touched.
template <class Vec> inline Vec load(const void *from, int count) {
  Vec v{};
  __builtin_memcpy(&v, from, static_cast<size_t>(count) * sizeof(LaneOf<Vec>));
  return v;
}
template <class Vec> inline void store(void *to, Vec v, int count) {
  __builtin_memcpy(to, &v, static_cast<size_t>(count) * sizeof(LaneOf<Vec>));
}

/// Runs step(i, lanes) from left to right over `count` elements, a whole vector at a time and then the rest.
template <class Vec, class Step> inline void forEachVector(int count, Step step) {
  int i = 0;
  for (; i + kLanes<Vec> <= count; i += kLanes<Vec>)
    step(i, kLanes<Vec>);
  if (i < count)
    step(i, count - i);
}

/// Block i from and to a place of its own, from[i] and to[i].
template <class Vec> inline Vec loadBlocks(const void *const *from) {
  const auto block = [from](int i) { return _mm_loadu_si128(static_cast<const __m128i *>(from[i])); };
#if defined(__AVX512BW__)
  Register v = _mm512_castsi128_si512(block(0));
  v = _mm512_inserti32x4(v, block(1), 1);
  v = _mm512_inserti32x4(v, block(2), 2);
  return as<Vec>(_mm512_inserti32x4(v, block(3), 3));
#elif defined(__AVX2__)
  return as<Vec>(_mm256_inserti128_si256(_mm256_castsi128_si256(block(0)), block(1), 1));
#else
  return as<Vec>(block(0));
#endif
}
template <class Vec> inline void storeBlocks(void *const *to, Vec v) {
  const auto block = [to](int i) { return static_cast<__m128i *>(to[i]); };
  const auto all = as<Register>(v);
#if defined(__AVX512BW__)
  _mm_storeu_si128(block(0), _mm512_castsi512_si128(all));
  _mm_storeu_si128(block(1), _mm512_extracti32x4_epi32(all, 1));
  _mm_storeu_si128(block(2), _mm512_extracti32x4_epi32(all, 2));
  _mm_storeu_si128(block(3), _mm512_extracti32x4_epi32(all, 3));
#elif defined(__AVX2__)
  _mm_storeu_si128(block(0), _mm256_castsi256_si128(all));
  _mm_storeu_si128(block(1), _mm256_extracti128_si256(all, 1));
#else
  _mm_storeu_si128(block(0), all);
#endif
}

/// table[index] in every lane.
template <class Entry> inline auto gather(const Entry *table, U32xN index) {
  Vector<Entry, kLanes<U32xN>> entries;
  for (int i = 0; i < kLanes<U32xN>; ++i)
    entries[i] = table[index[i]];
  return entries;
}

// ---- Lane by lane ----

#define ZOL_LANE_BY_LANE(name, Vec, operation)                                                               \
  inline Vec name(Vec a, Vec b) { return as<Vec>(ZOL_V(operation)(as<Register>(a), as<Register>(b))); }

// A float that is not a number gives way to b.
ZOL_LANE_BY_LANE(min, U8xN, min_epu8)
ZOL_LANE_BY_LANE(max, U8xN, max_epu8)
ZOL_LANE_BY_LANE(min, I16xN, min_epi16)
ZOL_LANE_BY_LANE(max, I16xN, max_epi16)
inline F32xN min(F32xN a, F32xN b) { return ZOL_V(min_ps)(a, b); }
inline F32xN max(F32xN a, F32xN b) { return ZOL_V(max_ps)(a, b); }
inline F64xN min(F64xN a, F64xN b) { return ZOL_V(min_pd)(a, b); }
inline F64xN max(F64xN a, F64xN b) { return ZOL_V(max_pd)(a, b); }
inline I32xN min(I32xN a, I32xN b) { return a < b ? a : b; }
inline I32xN max(I32xN a, I32xN b) { return a > b ? a : b; }

ZOL_LANE_BY_LANE(addSaturated, U8xN, adds_epu8)
ZOL_LANE_BY_LANE(addSaturated, I8xN, adds_epi8)
ZOL_LANE_BY_LANE(addSaturated, U16xN, adds_epu16)
ZOL_LANE_BY_LANE(addSaturated, I16xN, adds_epi16)
ZOL_LANE_BY_LANE(subSaturated, U8xN, subs_epu8)
ZOL_LANE_BY_LANE(subSaturated, I8xN, subs_epi8)
ZOL_LANE_BY_LANE(subSaturated, U16xN, subs_epu16)
ZOL_LANE_BY_LANE(subSaturated, I16xN, subs_epi16)

// (a + b + 1) >> 1.
ZOL_LANE_BY_LANE(averageUp, U8xN, avg_epu8)
ZOL_LANE_BY_LANE(averageUp, U16xN, avg_epu16)

// a * b >> 16.
ZOL_LANE_BY_LANE(mulHigh, U16xN, mulhi_epu16)
ZOL_LANE_BY_LANE(mulHigh, I16xN, mulhi_epi16)

/// (a + b) >> 1, of U8xN or U16xN.
template <class Vec> inline Vec averageDown(Vec a, Vec b) { return averageUp(a, b) - ((a ^ b) & 1); }

/// |a - b|, of U8xN or U16xN.
template <class Vec> inline Vec absoluteDifference(Vec a, Vec b) {
  return subSaturated(a, b) | subSaturated(b, a);
}

/// a where the mask is set, else b. For masks that are not a comparison themselves, which ?: takes apart.
template <class Mask, class Vec> inline Vec select(Mask mask, Vec a, Vec b) {
  return as<Vec>((mask & as<Mask>(a)) | (~mask & as<Mask>(b)));
}

inline F32xN absolute(F32xN v) { return as<F32xN>(as<U32xN>(v) & 0x7FFFFFFF); }
inline F64xN absolute(F64xN v) { return as<F64xN>(as<U64xN>(v) & 0x7FFFFFFFFFFFFFFF); }

/// Of what an int32_t holds.
inline F64xN floor(F64xN v) {
#if defined(__AVX2__)
  return ZOL_V(floor_pd)(v);
#else
  const auto whole = convert<F64xN>(convert<Vector<int32_t, kLanes<F64xN>>>(v));
  return whole > v ? whole - 1.0 : whole;
#endif
}

inline F32xN squareRoot(F32xN v) { return ZOL_V(sqrt_ps)(v); }

/// v / 255, for every v.
inline U16xN div255(U16xN v) { return mulHigh(v, splat<U16xN>(0x8081)) >> 7; }

/// By a number of bits that is known at run time alone; 0 from 16 on.
inline U16xN shiftRight(U16xN v, int bits) {
  return as<U16xN>(ZOL_V(srl_epi16)(as<Register>(v), _mm_cvtsi32_si128(bits)));
}

// ---- Neighbouring lanes ----

/// a[2i] * b[2i] + a[2i + 1] * b[2i + 1].
inline I32xN mulAddPairs(I16xN a, I16xN b) {
  return as<I32xN>(ZOL_V(madd_epi16)(as<Register>(a), as<Register>(b)));
}
#if defined(__AVX2__)
/// The same of unsigned and signed bytes, saturated.
inline I16xN mulAddPairs(U8xN a, I8xN b) {
  return as<I16xN>(ZOL_V(maddubs_epi16)(as<Register>(a), as<Register>(b)));
}
#endif

/// a[2i] * b[2i], whole.
inline U64xN mulEvens(U32xN a, U32xN b) {
  return as<U64xN>(ZOL_V(mul_epu32)(as<Register>(a), as<Register>(b)));
}

template <class Vec, int... i> inline Vec alternate(Vec a, Vec b, std::integer_sequence<int, i...>) {
  return __builtin_shufflevector(a, b, (i & 1 ? kLanes<Vec> + i : i)...);
}
/// The even lanes of a and the odd lanes of b, each in its own place.
template <class Vec> inline Vec alternate(Vec a, Vec b) {
  return alternate(a, b, std::make_integer_sequence<int, kLanes<Vec>>());
}

template <class Vec, int... i> inline Vec duplicateEvens(Vec v, std::integer_sequence<int, i...>) {
  return __builtin_shufflevector(v, v, (i & ~1)...);
}
/// The even lanes, each in its own place and in the next.
template <class Vec> inline Vec duplicateEvens(Vec v) {
  return duplicateEvens(v, std::make_integer_sequence<int, kLanes<Vec>>());
}

// ---- Between lanes, block by block ----

// a[0], b[0], a[1], b[1] and so on, of the low or the high half.
#define ZOL_INTERLEAVE(name, operation)                                                                      \
  template <class Vec> inline Vec name(Vec a, Vec b) {                                                       \
    const auto x = as<Register>(a);                                                                          \
    const auto y = as<Register>(b);                                                                          \
    if constexpr (sizeof(LaneOf<Vec>) == 1)                                                                  \
      return as<Vec>(ZOL_V(operation##_epi8)(x, y));                                                         \
    else if constexpr (sizeof(LaneOf<Vec>) == 2)                                                             \
      return as<Vec>(ZOL_V(operation##_epi16)(x, y));                                                        \
    else if constexpr (sizeof(LaneOf<Vec>) == 4)                                                             \
      return as<Vec>(ZOL_V(operation##_epi32)(x, y));                                                        \
    else                                                                                                     \
      return as<Vec>(ZOL_V(operation##_epi64)(x, y));                                                        \
  }
ZOL_INTERLEAVE(interleaveLow, unpacklo)
ZOL_INTERLEAVE(interleaveHigh, unpackhi)

/// Lanes of twice the width.
template <class Wide = U16xN> inline Wide widenLow(U8xN v) { return as<Wide>(interleaveLow(v, U8xN{})); }
template <class Wide = U16xN> inline Wide widenHigh(U8xN v) { return as<Wide>(interleaveHigh(v, U8xN{})); }
template <class Wide = U32xN> inline Wide widenLow(U16xN v) { return as<Wide>(interleaveLow(v, U16xN{})); }
template <class Wide = U32xN> inline Wide widenHigh(U16xN v) { return as<Wide>(interleaveHigh(v, U16xN{})); }
inline I32xN widenLow(I16xN v) { return as<I32xN>(interleaveLow(I16xN{}, v)) >> 16; }
inline I32xN widenHigh(I16xN v) { return as<I32xN>(interleaveHigh(I16xN{}, v)) >> 16; }

/// Lanes of half the width, saturated.
inline U8xN packU8(I16xN low, I16xN high) {
  return as<U8xN>(ZOL_V(packus_epi16)(as<Register>(low), as<Register>(high)));
}
inline I8xN packI8(I16xN low, I16xN high) {
  return as<I8xN>(ZOL_V(packs_epi16)(as<Register>(low), as<Register>(high)));
}
inline I16xN packI16(I32xN low, I32xN high) {
  return as<I16xN>(ZOL_V(packs_epi32)(as<Register>(low), as<Register>(high)));
}
inline U16xN packU16(I32xN low, I32xN high) {
#if defined(__AVX2__)
  return as<U16xN>(ZOL_V(packus_epi32)(as<Register>(low), as<Register>(high)));
#else
  return as<U16xN>(packI16(low - 0x8000, high - 0x8000)) ^ 0x8000;
#endif
}

/// The even or the odd lanes of a, then those of b; of 4 bytes each.
template <class Vec> inline Vec evens(Vec a, Vec b) {
  static_assert(sizeof(LaneOf<Vec>) == 4);
  return as<Vec>(ZOL_V(shuffle_ps)(as<F32xN>(a), as<F32xN>(b), 0x88));
}
template <class Vec> inline Vec odds(Vec a, Vec b) {
  static_assert(sizeof(LaneOf<Vec>) == 4);
  return as<Vec>(ZOL_V(shuffle_ps)(as<F32xN>(a), as<F32xN>(b), 0xDD));
}

#if defined(__AVX2__)
/// table[index] within every block, of the index's lower four bits; 0 where its top bit is set.
inline U8xN shuffle(U8xN table, U8xN index) {
  return as<U8xN>(ZOL_V(shuffle_epi8)(as<Register>(table), as<Register>(index)));
}
#endif

// ---- Between lanes, across blocks ----

/// All lanes of low and then those of high, modulo 2^16.
inline U16xN narrow(U32xN low, U32xN high) {
#if defined(__AVX512BW__)
  const __m512i lower = _mm512_castsi256_si512(_mm512_cvtepi32_epi16(as<Register>(low)));
  return as<U16xN>(_mm512_inserti64x4(lower, _mm512_cvtepi32_epi16(as<Register>(high)), 1));
#elif defined(__AVX2__)
  const auto packed = _mm256_packus_epi32(as<Register>(low & 0xFFFF), as<Register>(high & 0xFFFF));
  return as<U16xN>(_mm256_permute4x64_epi64(packed, 0xD8));
#else
  return as<U16xN>(packI16(as<I32xN>(low << 16) >> 16, as<I32xN>(high << 16) >> 16));
#endif
}

// ---- Out of vectors ----

#if defined(__AVX512BW__)
using ByteMask = uint64_t;
#else
using ByteMask = uint32_t;
#endif
constexpr ByteMask kAllBytes = ~ByteMask{} >> (8 * sizeof(ByteMask) - kVectorBytes);

/// The top bit of every byte, from the lowest byte up.
template <class Vec> inline ByteMask byteMask(Vec mask) {
#if defined(__AVX512BW__)
  return _mm512_movepi8_mask(as<Register>(mask));
#else
  return static_cast<ByteMask>(ZOL_V(movemask_epi8)(as<Register>(mask)));
#endif
}

/// The place of the lowest bit, and the number of bits.
inline int lowestBit(ByteMask bits) {
  return sizeof bits == 8 ? __builtin_ctzll(bits) : __builtin_ctz(static_cast<uint32_t>(bits));
}
inline int countBits(ByteMask bits) {
  return sizeof bits == 8 ? __builtin_popcountll(bits) : __builtin_popcount(static_cast<uint32_t>(bits));
}

template <class Vec> inline bool anySet(Vec mask) { return byteMask(mask) != 0; }
template <class Vec> inline bool allSet(Vec mask) { return byteMask(mask) == kAllBytes; }

/// The sum of the lanes, modulo 2^32.
inline uint32_t sum(U32xN v) {
#if defined(__AVX512BW__)
  const __m256i half = _mm256_add_epi32(_mm512_castsi512_si256(as<Register>(v)),
                                        _mm512_extracti64x4_epi64(as<Register>(v), 1));
#elif defined(__AVX2__)
  const auto half = as<Register>(v);
#endif
#if defined(__AVX2__)
  __m128i block = _mm_add_epi32(_mm256_castsi256_si128(half), _mm256_extracti128_si256(half, 1));
#else
  auto block = as<Register>(v);
#endif
  block = _mm_add_epi32(block, _mm_shuffle_epi32(block, 0x4E));
  block = _mm_add_epi32(block, _mm_shuffle_epi32(block, 0xB1));
  return static_cast<uint32_t>(_mm_cvtsi128_si32(block));
}

#undef ZOL_V
#undef ZOL_LANE_BY_LANE
#undef ZOL_INTERLEAVE

} // namespace
} // namespace zol::ZOL_LEVEL
