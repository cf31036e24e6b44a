// Layers of particles in their plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace zol::plain {

using LayerPixel = std::array<int, 4>; ///< blue, green, red times alpha, alpha; 32768 = 1.0

/// A particle's value, 65025 = 1.0, of each channel over what the layer has; `ink` is 33026 = 1.0.
inline LayerPixel layParticle(const LayerPixel &p, const LayerPixel &value, const LayerPixel &ink,
                              bool adds) {
  LayerPixel s, out;
  for (size_t c = 0; c < 4; ++c)
    s[c] = static_cast<int>(int64_t{value[c]} * ink[c] >> 16);
  for (size_t c = 0; c < 4; ++c)
    out[c] =
        adds ? std::min(32768, p[c] + s[c]) : s[c] + static_cast<int>(int64_t{p[c]} * (32768 - s[3]) >> 15);
  return out;
}

/// The value of a soft dot at a distance in columns and rows, 255.5 at its edge.
inline int dotValue(float x, float y) {
  const int squares =
      static_cast<int>(std::min(x * x, 65280.0F)) + static_cast<int>(std::min(y * y, 65280.0F));
  const int64_t u = std::max(0, 65280 - squares);
  return static_cast<int>(u * u >> 16);
}

inline _color_t layOver(const _color_t &below, const LayerPixel &p) {
  if (p[3] == 0)
    return below;
  const int64_t rest = below.a * (32768 - p[3]), total = 255 * p[3] + rest;
  const auto color = [&](size_t c, int under) {
    return static_cast<uint8_t>(below.a == 255 ? (255 * p[c] + under * (32768 - p[3]) + 16384) >> 15
                                               : (65025LL * p[c] + under * rest + total / 2) / total);
  };
  return {color(0, below.b), color(1, below.g), color(2, below.r),
          static_cast<uint8_t>((total + 16384) >> 15)};
}

} // namespace zol::plain
