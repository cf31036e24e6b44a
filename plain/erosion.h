// The erosion of alpha as its definition reads.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace zol::plain {

/// Gives every pixel the least alpha within `radius` along one direction, or between two whole radii's.
inline void erode(const pic &picture, int dx, int dy, float radius) {
  if (!(radius > 0))
    return;
  const std::vector<_color_t> src(picture.Pixels, picture.Pixels + picture.Width * picture.Height);
  const float clipped = std::min(radius, 40000.0F);
  const int whole = static_cast<int>(clipped);
  const int part = static_cast<int>((clipped - static_cast<float>(whole)) * 256 + 0.5F);
  const auto leastWithin = [&](int x, int y, int reach) {
    int least = 255;
    for (int d = -std::min(reach, 400); d <= std::min(reach, 400); ++d)
      if (const int u = x + d * dx, v = y + d * dy;
          u >= 0 && u < picture.Width && v >= 0 && v < picture.Height)
        least = std::min<int>(least, src[static_cast<size_t>(v * picture.Width + u)].a);
    return least;
  };
  for (int y = 0; y < picture.Height; ++y)
    for (int x = 0; x < picture.Width; ++x) {
      const int near = leastWithin(x, y, whole), far = leastWithin(x, y, whole + 1);
      picture.Pixels[y * picture.Width + x].a =
          static_cast<uint8_t>(near - ((near - far) * part + 128) / 256);
    }
}

} // namespace zol::plain
