// Probes of four by four pixels in lanes, for level sources.
#pragma once

#include "kernels/color/wide_lanes.h"
#include "kernels/warp/taps.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Lane i of every four, in all four.
template <int lane, class Vec, int... i> Vec spread(Vec v, std::integer_sequence<int, i...> /*all*/) {
  return __builtin_shufflevector(v, v, ((i & ~3) | lane)...);
}
/// Pair i of weights in all lanes of its block.
template <int pair> I16xN weightPair(I16xN taps) {
  return as<I16xN>(spread<pair>(as<U32xN>(taps), std::make_integer_sequence<int, kPixels>()));
}

/// What lies at offsets in bytes: that of pixel 4 b + j in block b.
template <class Vec> [[gnu::always_inline]] inline Vec loadAt(const void *base, const int *offsets, int j) {
  const void *places[kBlocks];
  for (int b = 0; b < kBlocks; ++b)
    places[b] = static_cast<const char *>(base) + offsets[4 * b + j];
  return loadBlocks<Vec>(places);
}

// ---- Down the columns ----

/// Four by four pixels for every block.
struct Neighbourhood {
  U8xN rows[4];
};

/// Weighted sums down the four columns: the first two and the others, four channels each.
struct Columns {
  I16xN first, second;
};

/// Of two columns, whose values of rows 0 and 2, and of rows 1 and 3, stand in turn.
[[gnu::always_inline]] inline I16xN columnPair(I16xN evens0, I16xN odds0, I16xN evens1, I16xN odds1,
                                               I16xN down, int shift) {
  const int half = 1 << shift >> 1;
  const I16xN w02 = weightPair<0>(down), w13 = weightPair<1>(down);
  return packI16((mulAddPairs(evens0, w02) + mulAddPairs(odds0, w13) + half) >> shift,
                 (mulAddPairs(evens1, w02) + mulAddPairs(odds1, w13) + half) >> shift);
}

// What is summed. kSurplus is what every sum is more than it should be.

/// Channels alone, 64 = 1 in the sums.
struct Opaque {
  static constexpr int kSurplus = 0;

  [[gnu::always_inline]] static Columns columns(const Neighbourhood &n, I16xN down) {
    const U8xN evensLow = interleaveLow(n.rows[0], n.rows[2]), oddsLow = interleaveLow(n.rows[1], n.rows[3]);
    const U8xN evensHigh = interleaveHigh(n.rows[0], n.rows[2]),
               oddsHigh = interleaveHigh(n.rows[1], n.rows[3]);
    const auto low = [](U8xN v) { return widenLow<I16xN>(v); };
    const auto high = [](U8xN v) { return widenHigh<I16xN>(v); };
    return {columnPair(low(evensLow), low(oddsLow), high(evensLow), high(oddsLow), down, 8),
            columnPair(low(evensHigh), low(oddsHigh), high(evensHigh), high(oddsHigh), down, 8)};
  }
};

/// Channels times alpha, and alpha times 255, in quarters.
struct Premultiplied {
  static constexpr int kSurplus = 0;

  [[gnu::always_inline]] static Columns columns(const Neighbourhood &n, I16xN down) {
    I16xN low[4], high[4];
    for (int row = 0; row < 4; ++row) {
      low[row] = as<I16xN>((wideOf(widenLow(n.rows[row])) + 2) >> 2);
      high[row] = as<I16xN>((wideOf(widenHigh(n.rows[row])) + 2) >> 2);
    }
    const auto columnsOf = [down](const I16xN(&rows)[4]) {
      return columnPair(interleaveLow(rows[0], rows[2]), interleaveLow(rows[1], rows[3]),
                        interleaveHigh(rows[0], rows[2]), interleaveHigh(rows[1], rows[3]), down, 14);
    };
    return {columnsOf(low), columnsOf(high)};
  }
};

#if defined(__AVX2__)
/// As Opaque, by the two parts of weights: 128 high + low. All sums fit 16 bits, the last one modulo 2^16
/// until it is halved.
struct OpaqueInParts {
  static constexpr int kSurplus = 8192;

  [[gnu::always_inline]] static Columns columns(const Neighbourhood &n, I16xN down) {
    const auto pair = [down](int byte) {
      const auto both = splat<U16xN>(static_cast<uint16_t>(byte | (byte + 1) << 8));
      return as<I8xN>(shuffle(as<U8xN>(down), as<U8xN>(both)));
    };
    const I8xN high02 = pair(8), high13 = pair(10), low02 = pair(12), low13 = pair(14);
    const auto sums = [&](U8xN rows02, U8xN rows13) {
      const I16xN high = mulAddPairs(rows02, high02) + mulAddPairs(rows13, high13);
      const I16xN low = mulAddPairs(rows02, low02) + mulAddPairs(rows13, low13);
      return as<I16xN>(as<U16xN>(high + (low >> 7) + (2 * kSurplus + 1)) >> 1);
    };
    return {sums(interleaveLow(n.rows[0], n.rows[2]), interleaveLow(n.rows[1], n.rows[3])),
            sums(interleaveHigh(n.rows[0], n.rows[2]), interleaveHigh(n.rows[1], n.rows[3]))};
  }
};
#else
using OpaqueInParts = Opaque;
#endif

/// What sums the same with weights that do not come in parts.
template <class Values>
using InWhole = std::conditional_t<std::is_same_v<Values, OpaqueInParts>, Opaque, Values>;

/// Whether weights at any of these phases may not come in parts, of a radius of 64.
inline bool isNearWhole(I32xN places) { return anySet(((places + 1) & (kPhases - 1)) < 3); }

// ---- Along the rows ----

[[gnu::always_inline]] inline I32xN acrossColumns(const Columns &c, I16xN across, int surplus) {
  const I32xN sums = mulAddPairs(interleaveLow(c.first, c.second), weightPair<0>(across)) +
                     mulAddPairs(interleaveHigh(c.first, c.second), weightPair<1>(across));
  return (sums + (8192 - 16384 * surplus)) >> 14;
}

/// What a vector's pixels gather: pixel 4 b + j in block b of sums[j].
struct Sums {
  I32xN sums[4];
};

/// Of the sums that sum(j) gives.
template <class Sum> [[gnu::always_inline]] inline Sums sumsOf(Sum sum) {
  return {{sum(0), sum(1), sum(2), sum(3)}};
}

// ---- Means ----

/// sums / total, rounded.
inline I32xN mean(I32xN sums, int total) {
  using Doubles = Vector<double, kLanes<I32xN>>;
  const I32xN rounding = sums + total / 2;
  if (total == 2)
    return (rounding - (rounding >> 31)) >> 1;
  if (total == 4)
    return (rounding + ((rounding >> 31) & 3)) >> 2;
  return convert<I32xN>(convert<Doubles>(rounding) / total);
}

/// Pixel 4 b + j from block b of channels[j].
inline U32xN packed(const I32xN (&channels)[4]) {
  return as<U32xN>(packU8(packI16(channels[0], channels[1]), packI16(channels[2], channels[3])));
}

inline U32xN opaquePixels(const Sums &means) {
  I32xN channels[4];
  for (int j = 0; j < 4; ++j)
    channels[j] = (means.sums[j] + 32) >> 6;
  return packed(channels) | 0xFF000000;
}

/// Floats are exact here: dividends that matter are integers below 2^24 and a quotient, if it is not whole,
/// is further from the next integer than rounding can take it.
inline U32xN dividedByAlpha(const Sums &means) {
  const auto alphaLanes = as<I32xN>(interleaveLow(U64xN{}, splat<U64xN>(0xFFFFFFFF00000000)));
  I32xN channels[4];
  for (int j = 0; j < 4; ++j) {
    const I32xN sums = means.sums[j], alphas = alphaOfEach(sums);
    const I32xN dividend = select(alphaLanes, 4 * sums + 127, 255 * sums + (alphas >> 1));
    const I32xN divisor = select(alphaLanes, splat<I32xN>(255), max(alphas, splat<I32xN>(1)));
    const I32xN quotient = convert<I32xN>(convert<F32xN>(dividend) / convert<F32xN>(divisor));
    channels[j] = alphas > 0 ? quotient : I32xN{};
  }
  const U32xN pixels = packed(channels);
  return pixels >= 0x01000000 ? pixels : U32xN{};
}

} // namespace
} // namespace zol::ZOL_LEVEL
