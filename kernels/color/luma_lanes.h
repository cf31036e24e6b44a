// luma.h by lanes, for level sources.
#pragma once

#include "kernels/color/channel_lanes.h"
#include "kernels/simd/divide.h"

namespace zol::ZOL_LEVEL {
namespace {

inline I16xN luma(const RgbLanes &c) {
  return as<I16xN>(as<U16xN>(c.red * 54 + c.green * 183 + c.blue * 19) >> 8);
}

/// y + (c - y) * part / whole. Distances of channels from y are below 256, as are parts and wholes, and no
/// whole is 0.
inline RgbLanes drawn(const RgbLanes &c, I16xN y, I16xN part, I16xN whole) {
  const Divisors by(as<U16xN>(whole));
  const auto channel = [&](I16xN v) {
    const I16xN sign = (v - y) >> 15;
    const I16xN way = ((v - y) ^ sign) - sign;
    const auto drawnWay = as<I16xN>(by.divide(as<U16xN>(way) * as<U16xN>(part)));
    return y + ((drawnWay ^ sign) - sign);
  };
  return {channel(c.red), channel(c.green), channel(c.blue)};
}

/// Channels and y within 0..255.
inline RgbLanes withLuma(const RgbLanes &c, I16xN y) {
  const I16xN move = y - luma(c);
  RgbLanes out = {c.red + move, c.green + move, c.blue + move};
  // A part as great as the whole leaves a colour as it is.
  if (const I16xN n = least(out); anySet(n < 0)) {
    const auto inside = n >= 0;
    out = drawn(out, y, inside ? splat<I16xN>(1) : y, inside ? splat<I16xN>(1) : y - n);
  }
  if (const I16xN x = greatest(out); anySet(x > 255)) {
    const auto inside = x <= 255;
    out = drawn(out, y, inside ? splat<I16xN>(1) : 255 - y, inside ? splat<I16xN>(1) : x - y);
  }
  return out;
}

} // namespace
} // namespace zol::ZOL_LEVEL
