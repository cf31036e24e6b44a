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

/// The weights of the four pixels of a line around a place, of which the first lies before it. They stand in
/// the order 0, 2, 1, 3, as sums of products of pairs want them.
struct Taps {
  int16_t weights[4]; ///< 16384 in all
  int16_t coarse[4];  ///< 128 in all: their products with bytes fit 16 bits. 128 alone on a pixel, else less
};

inline constexpr int kPhases = 256; ///< places between two pixels
inline constexpr int kLeastRadius = 64, kMostRadius = 128;

/// One for every phase; radius in 1/64 pixel. Those of the next radius follow. Not of WarpFilter::pixels.
const Taps *tapsOf(WarpFilter filter, int radius);

} // namespace zol
