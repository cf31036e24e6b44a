// One pixel over another in straight alpha, for level sources.
#pragma once

#include "kernels/color/wide_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

/// A channel of every pixel, from bit `shift` on.
inline F32xN floatChannel(U32xN pixels, int shift) {
  return convert<F32xN>(as<I32xN>(pixels >> shift & 0xFF));
}

/// A number of every pixel, below 2^16, in lanes of 16 bits for the first two pixels of every four and for
/// the others, four times each.
struct PixelWeights {
  explicit PixelWeights(U32xN v) : low(interleaveLow(v | v << 16)), high(interleaveHigh(v | v << 16)) {}
  U16xN low, high;

private:
  static U16xN interleaveLow(U32xN v) { return as<U16xN>(ZOL_LEVEL::interleaveLow(v, v)); }
  static U16xN interleaveHigh(U32xN v) { return as<U16xN>(ZOL_LEVEL::interleaveHigh(v, v)); }
};

/// (m blended + (255 - m) lower) / 255 in the colours; the alpha is the lower one.
inline U32xN overOpaque(U32xN lower, U32xN blended, U32xN m) {
  const PixelWeights weights(m);
  const auto mix = [](U16xN l, U16xN b, U16xN weight) {
    return as<I16xN>(div255(l * 255 + (b - l) * weight)); // modulo 2^16, where the sum fits
  };
  const auto l = as<U8xN>(lower), b = as<U8xN>(blended);
  const auto mixed = as<U32xN>(
      packU8(mix(widenLow(l), widenLow(b), weights.low), mix(widenHigh(l), widenHigh(b), weights.high)));
  return (mixed & 0x00FFFFFF) | (lower & 0xFF000000);
}

/// The upper pixels over any lower ones, `blended` being what shows where both are opaque. Where m is 0 the
/// lower pixel stays.
///
/// Floats are exact here: every sum is an integer below 2^24, and a quotient below 256 of such numbers, if
/// it is not whole, is further from the next integer than rounding can take it.
inline U32xN over(U32xN lower, U32xN upper, U32xN blended, U32xN m) {
  const F32xN upperAlpha = floatChannel(m, 0), lowerAlpha = floatChannel(lower, 24);
  const F32xN both = upperAlpha * lowerAlpha;
  const F32xN upperAlone = upperAlpha * 255.0F - both, lowerAlone = lowerAlpha * 255.0F - both;
  const F32xN total = upperAlpha * 255.0F + lowerAlone;
  const F32xN divisor = max(total, splat<F32xN>(1));
  U32xN result = as<U32xN>(convert<I32xN>(total / 255.0F)) << 24;
  for (int shift = 0; shift < 24; shift += 8) {
    const F32xN sum = both * floatChannel(blended, shift) + upperAlone * floatChannel(upper, shift) +
                      lowerAlone * floatChannel(lower, shift);
    result |= as<U32xN>(convert<I32xN>(sum / divisor)) << shift;
  }
  return m == 0 ? lower : result;
}

} // namespace
} // namespace zol::ZOL_LEVEL
