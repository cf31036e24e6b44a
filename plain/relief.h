// Relief as its definition reads, pixel by pixel. How it is lit is said by the kernel's record.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace zol::plain {

inline uint16_t height(_color_t p, bool ofAlpha) {
  const int luma = (54 * p.r + 183 * p.g + 19 * p.b) >> 8;
  return static_cast<uint16_t>((ofAlpha ? 255 : luma) * p.a);
}

template <class Relief> float shine(const Relief &relief, float cosine) {
  for (int i = 0; i < relief.squarings; ++i)
    cosine *= cosine;
  return cosine + (cosine * cosine - cosine) * relief.part;
}

template <class Vector> Vector unit(const Vector &v) {
  const float length = std::sqrt((v.x * v.x + v.y * v.y) + v.z * v.z);
  return {v.x / length, v.y / length, v.z / length};
}

/// A pixel at (x, y) of the frame on ground of the slopes u and v.
template <class Relief> _color_t lit(const Relief &relief, _color_t p, float u, float v, int x, int y) {
  if (p.a == 0)
    return p;
  auto light = relief.light;
  if (relief.isPoint) {
    light = {light.x - (static_cast<float>(x) + 0.5F),
             (light.y - (static_cast<float>(y) + 0.5F)) / relief.aspect, light.z};
    light = unit(light);
  }
  const float n = std::sqrt((u * u + v * v) + 1);
  const float q = std::clamp((light.z - (u * light.x + v * light.y)) / (light.z * n), 0.0F, 4.0F);
  const int i = static_cast<int>((relief.ambient + (1 - relief.ambient) * q) * 4096 + 0.5F);
  int more = 0;
  if (relief.shine > 0) {
    auto h = light;
    h.z += 1;
    h = unit(h);
    const float cosine = std::max(0.0F, (h.z - (u * h.x + v * h.y)) / n);
    more = static_cast<int>(std::max(0.0F, shine(relief, cosine) - shine(relief, h.z)) * relief.shine * 4096);
  }
  const auto channel = [&](int c, int shift) {
    c = std::min(255, c * i >> 12);
    return static_cast<uint8_t>(c + ((255 - c) * int(relief.color >> shift & 255) / 255 * more >> 12));
  };
  return {channel(p.b, 0), channel(p.g, 8), channel(p.r, 16), p.a};
}

/// Pixels at (x, y) of the frame and their heights.
template <class Relief>
std::vector<_color_t> relief(const Relief &relief, const _color_t *pixels, const uint16_t *heights, int width,
                             int height, int x, int y) {
  std::vector<_color_t> out;
  for (int row = 0; row < height; ++row)
    for (int column = 0; column < width; ++column) {
      const auto at = [&](int dx, int dy) -> int {
        return heights[std::clamp(row + dy, 0, height - 1) * width + std::clamp(column + dx, 0, width - 1)];
      };
      const auto sobel = [&](int ax, int ay, int bx, int by) { // along (ax, ay), across it (bx, by)
        int sum = 0;
        for (int side = -1; side <= 1; ++side)
          sum += (side == 0 ? 2 : 1) *
                 (at(ax + side * bx, ay + side * by) - at(-ax + side * bx, -ay + side * by));
        return static_cast<float>(sum);
      };
      out.push_back(lit(relief, pixels[row * width + column], sobel(1, 0, 0, 1) * relief.across,
                        sobel(0, 1, 1, 0) * relief.down, x + column, y + row));
    }
  return out;
}

} // namespace zol::plain
