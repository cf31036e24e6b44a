// Wide values in lanes, for level sources.
#pragma once

#include "kernels/color/wide.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Every fourth lane, a pixel's alpha, in that lane and the three before it.
template <class Vec, int... i> inline Vec alphaOfEach(Vec v, std::integer_sequence<int, i...> /*all*/) {
  return __builtin_shufflevector(v, v, (i | 3)...);
}
template <class Vec> inline Vec alphaOfEach(Vec v) {
  return alphaOfEach(v, std::make_integer_sequence<int, kLanes<Vec>>());
}

/// Pixels whose bytes stand in 16 bits each: colours times alpha, and alpha times `factor`.
inline U16xN timesAlpha(U16xN pixels, uint16_t factor) {
  const auto alphas = as<U64xN>(alphaOfEach(pixels));
  return pixels * as<U16xN>((alphas & 0x0000FFFFFFFFFFFF) | uint64_t{factor} << 48);
}

/// Their wide values.
inline U16xN wideOf(U16xN pixels) { return timesAlpha(pixels, 255); }

/// The terms of the columns from i on.
template <class Vec> inline Vec termsAt(const Rounding &rounding, int i) {
  static_assert(sizeof(Vec) <= sizeof rounding.terms);
  return load<Vec>(rounding.terms + i % Rounding::kPeriod);
}

/// Channels of as many pixels as a vector of them has, in their order.
struct WideChannels {
  F32xN b, g, r, a;
};

/// Of low, the first two of every four pixels, and high, the others.
inline WideChannels channelsOf(U16xN low, U16xN high) {
  const auto blueGreen = evens(as<U32xN>(low), as<U32xN>(high));
  const auto redAlpha = odds(as<U32xN>(low), as<U32xN>(high));
  const auto lanes = [](U32xN v) { return convert<F32xN>(as<I32xN>(v)); };
  return {lanes(blueGreen & 0xFFFF), lanes(blueGreen >> 16), lanes(redAlpha & 0xFFFF), lanes(redAlpha >> 16)};
}

/// Pixels of bytes; `terms` are the columns'. Floats are exact here: dividends are integers below 2^24 and a
/// quotient, if it is not whole, is further from the next integer than rounding can take it.
inline U32xN bytesOf(const WideChannels &v, F32xN terms, U32xN hidden) {
  const auto whole = [](F32xN x) { return convert<I32xN>(x); };
  const auto byte = [whole](F32xN x) { return as<U32xN>(whole(min(x, splat<F32xN>(255)))); };
  const F32xN added = convert<F32xN>(whole(terms * v.a / 255.0F));
  const F32xN divisor = max(v.a, splat<F32xN>(1));
  const auto color = [=](F32xN c) { return byte((c * 255.0F + added) / divisor); };
  const U32xN alpha = byte((v.a + terms) / 255.0F);
  const U32xN colors = color(v.b) | color(v.g) << 8 | color(v.r) << 16;
  return alpha << 24 | (alpha == 0 ? hidden & 0x00FFFFFF : colors);
}

} // namespace
} // namespace zol::ZOL_LEVEL
