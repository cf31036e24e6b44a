#include "kernels/matte/extend_rows.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kPixels = kLanes<U32xN>;

/// The pixels at even and at odd places of twice as many as a vector holds.
struct Neighbours {
  U32xN even{}, odd{};
};

Neighbours loadNeighbours(const _color_t *from, int count) {
  _color_t rest[2 * kPixels] = {};
  if (count < 2 * kPixels) {
    __builtin_memcpy(rest, from, static_cast<size_t>(count) * sizeof *from);
    from = rest;
  }
  const void *first[kBlocks], *second[kBlocks];
  for (int i = 0; i < kBlocks; ++i) {
    first[i] = from + 8 * i;
    second[i] = from + 8 * i + 4;
  }
  const auto low = loadBlocks<U32xN>(first), high = loadBlocks<U32xN>(second);
  return {evens(low, high), odds(low, high)};
}

/// A channel of both neighbours in pairs of words.
I16xN pairsOf(const Neighbours &pixels, int shift) {
  return as<I16xN>((pixels.even >> shift & 0xFF) | (pixels.odd >> shift & 0xFF) << 16);
}

/// Sums of colours times alpha, over sums of alphas: c and a of up to four pixels.
///
/// Exact: the sums are integers below 2^18, and a quotient that is half of the divisor's part further from
/// the next integer than it was is more than 2^-11 away from it; rounding takes less than 2^-14.
U32xN quotient(I32xN sum, F32xN reciprocal) {
  return as<U32xN>(convert<I32xN>((convert<F32xN>(sum) + 0.5F) * reciprocal));
}

U32xN halved(const Neighbours &upper, const Neighbours &lower) {
  const I16xN upperAlphas = pairsOf(upper, 24), lowerAlphas = pairsOf(lower, 24);
  const I32xN alphas = mulAddPairs(upperAlphas, splat<I16xN>(1)) + mulAddPairs(lowerAlphas, splat<I16xN>(1));
  const F32xN reciprocal = 1.0F / convert<F32xN>(max(alphas, splat<I32xN>(1)));
  U32xN result = as<U32xN>((alphas + 3) >> 2) << 24;
  for (int shift = 0; shift < 24; shift += 8) {
    const I32xN sum =
        mulAddPairs(pairsOf(upper, shift), upperAlphas) + mulAddPairs(pairsOf(lower, shift), lowerAlphas);
    result |= quotient(sum, reciprocal) << shift;
  }
  return result;
}

template <int... i> U32xN twice(const void *from, int count, std::integer_sequence<int, i...> /*all*/) {
  const auto v = load<Vector<uint32_t, kPixels / 2>>(from, count);
  return __builtin_shufflevector(v, v, (i / 2)...);
}
/// Each of the pixels that `count` halves stand for.
U32xN wholes(const _color_t *halves, int count) {
  return twice(halves, (count + 1) / 2, std::make_integer_sequence<int, kPixels>());
}

} // namespace

void halveRow(const _color_t *upper, const _color_t *lower, int width, _color_t *half) {
  forEachVector<U32xN>((width + 1) / 2, [=](int i, int n) {
    const int count = width - 2 * i < 2 * kPixels ? width - 2 * i : 2 * kPixels;
    store(half + i,
          halved(loadNeighbours(upper + 2 * i, count),
                 lower != nullptr ? loadNeighbours(lower + 2 * i, count) : Neighbours{}),
          n);
  });
}

void adoptRow(const _color_t *halves, _color_t *pixels, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const U32xN own = load<U32xN>(pixels + i, n);
    store(pixels + i, own < 1U << 24 ? wholes(halves + i / 2, n) : own, n);
  });
}

void extendRow(const _color_t *before, const _color_t *halves, _color_t *pixels, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto had = load<U32xN>(before + i, n) >> 24 != 0;
    if (allSet(had))
      return;
    const U32xN own = load<U32xN>(pixels + i, n);
    const U32xN colours = wholes(halves + i / 2, n) & 0x00FFFFFF;
    const auto stays = had | (own >> 24 == 0);
    store(pixels + i, select(stays, own, (own & 0xFF000000) | colours), n);
  });
}

} // namespace zol::ZOL_LEVEL
