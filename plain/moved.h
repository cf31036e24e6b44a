// A picture moved by sixteenths of a pixel in its plain form, and the shadow of one, one pixel at a time.
#pragma once

#include "frame/zol.h"
#include "plain/wide.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace zol::plain {

/// A position in sixteenths as the pixel left of and above it and what lies beyond.
struct Corner {
  int x, y, fx, fy;

  static Corner of(int px, int py) { return {px >> 4, py >> 4, px & 15, py & 15}; }
  [[nodiscard]] int weight(int right, int down) const {
    return (right != 0 ? fx : 16 - fx) * (down != 0 ? fy : 16 - fy);
  }
};

/// The frame's pixel (x, y) of a picture, transparent beyond its edges.
inline _color_t pixelOf(const pic &picture, int x, int y) {
  const int px = x - picture.X, py = y - picture.Y;
  const bool inside = px >= 0 && px < picture.Width && py >= 0 && py < picture.Height;
  return inside ? picture.Pixels[ptrdiff_t{py} * picture.Width + px] : _color_t{};
}

/// The frame's pixel (x, y) of the picture moved to the right and down.
inline _color_t moved(const pic &picture, int right, int down, int x, int y) {
  const Corner at = Corner::of(16 * x - right, 16 * y - down);
  int total = 0, sums[3] = {};
  for (int corner = 0; corner < 4; ++corner) {
    const _color_t p = pixelOf(picture, at.x + corner % 2, at.y + corner / 2);
    const int weight = at.weight(corner % 2, corner / 2) * p.a;
    total += weight;
    sums[0] += weight * p.b;
    sums[1] += weight * p.g;
    sums[2] += weight * p.r;
  }
  if (total == 0)
    return {};
  const auto color = [&](int sum) { return static_cast<uint8_t>((sum + total / 2) / total); };
  return {color(sums[0]), color(sums[1]), color(sums[2]), static_cast<uint8_t>((total + 128) >> 8)};
}

/// The shadow's alpha, as a byte, at pixel (x, y) of a plane of wide alphas that goes on beyond its edges.
inline uint8_t shadowAlpha(const uint16_t *alphas, int width, int height, int right, int down, int density,
                           int opacity, int x, int y, int term) {
  const Corner at = Corner::of(16 * x - right, 16 * y - down);
  int sum = 0;
  for (int corner = 0; corner < 4; ++corner) {
    const int px = std::clamp(at.x + corner % 2, 0, width - 1);
    const int py = std::clamp(at.y + corner / 2, 0, height - 1);
    const int dense = alphas[py * width + px] * (4096 + 7 * density) >> 12;
    sum += at.weight(corner % 2, corner / 2) * std::min(65025, dense);
  }
  return wideToByte(((sum + 128) >> 8) * opacity >> 12, term);
}

} // namespace zol::plain
