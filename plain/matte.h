// Mattes pixel by pixel: what they are made of, and levels.
#pragma once

#include "frame/zol.h"

#include <algorithm>

namespace zol::plain {

/// 0..5: alpha, luma, red, green, blue, opaque.
inline int matteValue(_color_t p, int source) {
  const int luma = (54 * p.r + 183 * p.g + 19 * p.b) >> 8;
  const int values[] = {255, luma, p.r, p.g, p.b};
  return source == 5 ? 255 : values[source] * p.a / 255;
}

inline int matteLevel(int x, bool inverts, double clipBlack, double clipWhite, double bias) {
  if (inverts)
    x = 255 - x;
  const int low = static_cast<int>(65280 * clipBlack), high = 65280 - static_cast<int>(65280 * clipWhite);
  x = 256 * x <= low ? 0 : 256 * x >= high ? 255 : (256 * x - low) * 255 / (high - low);
  const int p = 4096 + static_cast<int>(28672 * std::max(bias, 0.0));
  const int q = 4096 + static_cast<int>(28672 * std::max(-bias, 0.0));
  return 255 * x * p / (x * p + (255 - x) * q);
}

} // namespace zol::plain
