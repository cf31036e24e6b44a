// The channels of pixels in lanes of 16 bits, for level sources.
#pragma once

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Red, green and blue of two vectors of pixels.
struct RgbLanes {
  I16xN red, green, blue;
};

/// A channel of two vectors of pixels, from bit `shift` on.
inline I16xN channelOf(U32xN first, U32xN second, int shift) {
  return packI16(as<I32xN>(first >> shift & 0xFF), as<I32xN>(second >> shift & 0xFF));
}

inline RgbLanes channelsOf(U32xN first, U32xN second) {
  return {channelOf(first, second, 16), channelOf(first, second, 8), channelOf(first, second, 0)};
}

/// The first or the second vector of pixels again, of channels 0..255; their alpha is 0.
inline U32xN firstPixels(const RgbLanes &c) { return as<U32xN>(interleaveLow(c.green << 8 | c.blue, c.red)); }
inline U32xN secondPixels(const RgbLanes &c) {
  return as<U32xN>(interleaveHigh(c.green << 8 | c.blue, c.red));
}

inline I16xN least(const RgbLanes &c) { return min(min(c.red, c.green), c.blue); }
inline I16xN greatest(const RgbLanes &c) { return max(max(c.red, c.green), c.blue); }

} // namespace
} // namespace zol::ZOL_LEVEL
