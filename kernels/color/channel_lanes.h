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

// The same with blocks of both vectors in turn, so that lanes of 16 bits that are made of them stand in the
// pixels' order, as bytes beside them do.
inline PixelPair loadInTurn(const _color_t *from, int count) {
  if (kBlocks == 1)
    return loadPair(from, count);
  _color_t rest[kLanes<U16xN>];
  if (count < kLanes<U16xN>) {
    __builtin_memset(rest, 0, sizeof rest);
    __builtin_memcpy(rest, from, static_cast<size_t>(count) * sizeof *from);
    from = rest;
  }
  const void *places[2][kBlocks];
  for (int i = 0; i < kBlocks; ++i) {
    places[0][i] = from + 8 * i;
    places[1][i] = from + 8 * i + 4;
  }
  return {loadBlocks<U32xN>(places[0]), loadBlocks<U32xN>(places[1])};
}
inline void storeInTurn(_color_t *to, const PixelPair &pixels, int count) {
  if (kBlocks == 1)
    return storePair(to, pixels, count);
  _color_t rest[kLanes<U16xN>];
  _color_t *const all = count < kLanes<U16xN> ? rest : to;
  void *places[2][kBlocks];
  for (int i = 0; i < kBlocks; ++i) {
    places[0][i] = all + 8 * i;
    places[1][i] = all + 8 * i + 4;
  }
  storeBlocks(places[0], pixels.first);
  storeBlocks(places[1], pixels.second);
  if (all == rest)
    __builtin_memcpy(to, rest, static_cast<size_t>(count) * sizeof *to);
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
