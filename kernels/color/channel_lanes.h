// The channels of pixels in lanes of 16 bits, for level sources.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// As many pixels as there are lanes of 16 bits.
struct PixelPair {
  U32xN first, second;
};

/// Up to that many, from left to right; those behind them are 0. Nothing behind them is touched.
inline PixelPair loadPair(const _color_t *from, int count) {
  constexpr int kHalf = kLanes<U32xN>;
  if (count <= kHalf)
    return {load<U32xN>(from, count), U32xN{}};
  return {load<U32xN>(from), load<U32xN>(from + kHalf, count - kHalf)};
}
/// The same, dealt so that channelOf() has them in their order.
inline PixelPair loadInOrder(const _color_t *from, int count) {
  constexpr int kAll = 2 * kLanes<U32xN>;
  _color_t rest[kAll] = {};
  if (count < kAll)
    __builtin_memcpy(rest, from, static_cast<size_t>(count) * sizeof *from);
  const _color_t *const pixels = count < kAll ? rest : from;
  const void *first[kBlocks], *second[kBlocks];
  for (int b = 0; b < kBlocks; ++b) {
    first[b] = pixels + 8 * b;
    second[b] = pixels + 8 * b + 4;
  }
  return {loadBlocks<U32xN>(first), loadBlocks<U32xN>(second)};
}
inline void storePair(_color_t *to, const PixelPair &pixels, int count) {
  constexpr int kHalf = kLanes<U32xN>;
  store(to, pixels.first, count < kHalf ? count : kHalf);
  if (count > kHalf)
    store(to + kHalf, pixels.second, count - kHalf);
}

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
inline RgbLanes channelsOf(const PixelPair &pixels) { return channelsOf(pixels.first, pixels.second); }

/// The first or the second vector of pixels again, of channels 0..255; their alpha is 0.
inline U32xN firstPixels(const RgbLanes &c) { return as<U32xN>(interleaveLow(c.green << 8 | c.blue, c.red)); }
inline U32xN secondPixels(const RgbLanes &c) {
  return as<U32xN>(interleaveHigh(c.green << 8 | c.blue, c.red));
}

inline I16xN least(const RgbLanes &c) { return min(min(c.red, c.green), c.blue); }
inline I16xN greatest(const RgbLanes &c) { return max(max(c.red, c.green), c.blue); }

} // namespace
} // namespace zol::ZOL_LEVEL
