// The averages of frames in their plain form, pixel by pixel.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace zol::plain {

/// One pixel in every frame and its weight, of 256 in all.
struct Exposed {
  _color_t pixel;
  int weight;
};

inline _color_t averaged(const uint32_t (&c)[3], uint32_t a, _color_t hidden) {
  if ((a + 128) >> 8 == 0)
    return {hidden.b, hidden.g, hidden.r, 0};
  const auto color = [&](uint32_t sum) { return uint8_t(std::min((sum + a / 2) / a, 255U)); };
  return {color(c[0]), color(c[1]), color(c[2]), uint8_t((a + 128) >> 8)};
}

inline _color_t average(const std::vector<Exposed> &exposed) {
  uint32_t c[3] = {}, a = 0;
  for (const auto &[p, weight] : exposed) {
    const uint32_t w = uint32_t(weight) * p.a;
    a += w;
    c[0] += w * p.b;
    c[1] += w * p.g;
    c[2] += w * p.r;
  }
  return averaged(c, a, exposed[0].pixel);
}

inline _color_t premultiplied(_color_t p) {
  const auto color = [&](int c) { return uint8_t((c * p.a + 127) / 255); };
  return {color(p.b), color(p.g), color(p.r), p.a};
}

inline _color_t averageOfPremultiplied(const std::vector<Exposed> &exposed, _color_t hidden) {
  uint32_t c[3] = {}, a = 0;
  for (const auto &[p, weight] : exposed) {
    a += uint32_t(weight) * p.a;
    c[0] += uint32_t(weight) * p.b * 255;
    c[1] += uint32_t(weight) * p.g * 255;
    c[2] += uint32_t(weight) * p.r * 255;
  }
  return averaged(c, a, hidden);
}

} // namespace zol::plain
