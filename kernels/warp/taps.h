// Weights of the four by four pixels that a probe takes.
#pragma once

#include <cstdint>

namespace zol {

/// In the order of the effects' items.
enum class WarpFilter {
  sharp,  ///< cubic, smooth where it shrinks
  smooth, ///< linear
  pixels, ///< the nearest pixel alone
};

/// The weights, 16384 = 1.0 in all, of the four pixels of a line around a place: the one before it first.
/// They stand in the order 0, 2, 1, 3, as sums of products of pairs want them.
struct Taps {
  int16_t weights[4];
  /// weights = 128 high + low, so that no sum of products with bytes leaves 16 bits. Where one weight is
  /// 16384 it is not to be had, and these do not count.
  int8_t high[4], low[4];
};

inline constexpr int kPhases = 256; ///< places between two pixels
inline constexpr int kLeastRadius = 64, kMostRadius = 128;

/// One for every phase; radius in 1/64 pixel. Those of the next radius follow. Not of WarpFilter::pixels.
const Taps *tapsOf(WarpFilter filter, int radius);

} // namespace zol
