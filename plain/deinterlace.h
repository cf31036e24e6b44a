// Deinterlacing in its plain form: column by column, each from top to bottom.
#pragma once

#include <algorithm>
#include <cstdint>

namespace zol::plain {

/// Products that hosts can drive beyond 32 bits wrap.
inline int wrappedProduct(int a, int b) { return static_cast<int>(unsigned(a) * unsigned(b)); }

inline void deinterlace(uint32_t *dst, const uint32_t *src, int width, int height, int threshold, int edge,
                        bool blend) {
  edge = std::min(edge, 180);
  const int edgeSquared = wrappedProduct(edge, edge);
  const int limit = wrappedProduct(4, wrappedProduct(threshold, threshold));
  for (int x = 0; x < width; ++x) {
    const auto line = [&](int y) {
      if (y < 0)
        y = std::min(1, height - 1);
      if (y >= height)
        y = std::max(height - 2, 0);
      return src[y * width + x];
    };
    const auto channel = [](uint32_t pixel, int shift) { return static_cast<int>(pixel >> shift & 255); };
    const auto measure = [&](int y) {
      if (y < 0 || y >= height)
        return 0;
      const uint32_t above = line(y - 1), at = line(y), below = line(y + 1);
      const auto comb = [&](int shift) {
        const int u = channel(above, shift), c = channel(at, shift), d = channel(below, shift);
        return (u - c) * (d - c) - (wrappedProduct(edgeSquared, (u - d) * (u - d)) >> 12);
      };
      return 3 * comb(16) + 6 * comb(8) + comb(0);
    };
    int before = 0;
    int at = measure(0);
    for (int y = 0; y < height; ++y) {
      const int after = measure(y + 1);
      const uint32_t pixel = line(y), above = line(y - 1), below = line(y + 1);
      uint32_t result = pixel;
      if (before + 2 * at + after > limit) {
        uint32_t rebuilt = 0;
        for (int shift = 0; shift < 24; shift += 8) {
          const int u = channel(above, shift), c = channel(pixel, shift), d = channel(below, shift);
          rebuilt |= static_cast<uint32_t>(blend ? (u + 2 * c + d) >> 2 : (u + d) >> 1) << shift;
        }
        if (blend || y % 2 != 0)
          result = rebuilt;
      }
      dst[y * width + x] = result;
      before = at;
      at = after;
    }
  }
}

} // namespace zol::plain
