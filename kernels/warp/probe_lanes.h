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
template <int lane, class Vec> Vec spread(Vec v) {
  return spread<lane>(v, std::make_integer_sequence<int, kLanes<Vec>>());
}
/// Pair i of 16 bits in all lanes of its block.
template <int pair> I16xN spreadPair(I16xN v) { return as<I16xN>(spread<pair>(as<U32xN>(v))); }

/// One half of every lane, in both.
inline I16xN lowHalves(U32xN v) { return as<I16xN>(v << 16 | (v & 0xFFFF)); }
inline I16xN highHalves(U32xN v) { return as<I16xN>(v >> 16 | (v & 0xFFFF0000)); }

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

// What is summed. The columns' sums are 1 << kShift - 14 times the values that come of the probe.

/// Channels alone, 64 = 1 in what comes of it. Column sums are limited to 16 bits.
struct Opaque {
  static constexpr int kShift = 15;

  [[gnu::always_inline]] static Columns columns(const Neighbourhood &n, I16xN down) {
    const auto coarse = as<U32xN>(down);
    const I16xN w0 = lowHalves(spread<2>(coarse)), w2 = highHalves(spread<2>(coarse)),
                w1 = lowHalves(spread<3>(coarse)), w3 = highHalves(spread<3>(coarse));
    const auto sums = [&](auto widen) {
      const auto product = [&](int row, I16xN weights) { return as<I16xN>(widen(n.rows[row])) * weights; };
      return addSaturated(product(0, w0) + product(2, w2), product(1, w1) + product(3, w3));
    };
    return {sums([](U8xN v) { return widenLow(v); }), sums([](U8xN v) { return widenHigh(v); })};
  }
};

#if defined(__AVX2__)
/// The same where no weight is 128.
struct OpaqueBetween {
  static constexpr int kShift = Opaque::kShift;

  [[gnu::always_inline]] static Columns columns(const Neighbourhood &n, I16xN down) {
    const auto bytes = [down](int first, int second) {
      const auto both = splat<U16xN>(static_cast<uint16_t>(first | second << 8));
      return as<I8xN>(shuffle(as<U8xN>(down), as<U8xN>(both)));
    };
    const I8xN w02 = bytes(8, 10), w13 = bytes(12, 14);
    const auto sums = [=](U8xN rows02, U8xN rows13) {
      return addSaturated(mulAddPairs(rows02, w02), mulAddPairs(rows13, w13));
    };
    return {sums(interleaveLow(n.rows[0], n.rows[2]), interleaveLow(n.rows[1], n.rows[3])),
            sums(interleaveHigh(n.rows[0], n.rows[2]), interleaveHigh(n.rows[1], n.rows[3]))};
  }
};
#else
using OpaqueBetween = Opaque;
#endif

/// Channels times alpha, and alpha times 255, in quarters.
struct Premultiplied {
  static constexpr int kShift = 14;

  [[gnu::always_inline]] static Columns columns(const Neighbourhood &n, I16xN down) {
    I16xN low[4], high[4];
    for (int row = 0; row < 4; ++row) {
      low[row] = as<I16xN>((wideOf(widenLow(n.rows[row])) + 2) >> 2);
      high[row] = as<I16xN>((wideOf(widenHigh(n.rows[row])) + 2) >> 2);
    }
    return {columnPair(low, down), columnPair(high, down)};
  }

private:
  [[gnu::always_inline]] static I16xN columnPair(const I16xN (&rows)[4], I16xN down) {
    const I16xN w02 = spreadPair<0>(down), w13 = spreadPair<1>(down);
    const auto sum = [=](I16xN values02, I16xN values13) {
      return (mulAddPairs(values02, w02) + mulAddPairs(values13, w13) + 8192) >> 14;
    };
    return packI16(sum(interleaveLow(rows[0], rows[2]), interleaveLow(rows[1], rows[3])),
                   sum(interleaveHigh(rows[0], rows[2]), interleaveHigh(rows[1], rows[3])));
  }
};

/// What sums the same also where a weight is 128.
template <class Values>
using OnPixels = std::conditional_t<std::is_same_v<Values, OpaqueBetween>, Opaque, Values>;

// ---- Along the rows ----

template <class Values> [[gnu::always_inline]] inline I32xN acrossColumns(const Columns &c, I16xN across) {
  const I32xN sums = mulAddPairs(interleaveLow(c.first, c.second), spreadPair<0>(across)) +
                     mulAddPairs(interleaveHigh(c.first, c.second), spreadPair<1>(across));
  return (sums + (1 << Values::kShift >> 1)) >> Values::kShift;
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
