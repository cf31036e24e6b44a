// Recolor in its plain form: one pixel, every step and division written out.
#pragma once

#include "frame/zol.h"
#include "kernels/color/color_models.h"
#include "kernels/color/luma.h"
#include "kernels/color/recolor_rows.h"
#include "plain/color_models.h"

#include <algorithm>
#include <cstdlib>

namespace zol::plain {

/// 4096 = 1.0.
inline int recolorShare(const Rgb &in, const Recoloring &how) {
  uint8_t hue, lightness, chroma;
  rgbToHls(&hue, &lightness, &chroma, uint8_t(in.red), uint8_t(in.green), uint8_t(in.blue));
  int d = std::abs(hue - how.hue);
  if (d > 127)
    d = 255 - d;
  const int r = how.range, f = how.fading;
  int k = 16 * d <= r ? 4096 : 16 * d >= r + f ? 0 : 4096 * (r + f - 16 * d) / f;
  if (how.fullChroma > 0)
    k = k * std::min<int>(chroma, how.fullChroma) / how.fullChroma;
  return k;
}

inline _color_t recolor(_color_t pixel, const Recoloring &how) {
  const Rgb in = {pixel.r, pixel.g, pixel.b};
  Rgb c = in;
  const auto each = [&c](auto change) { c = {change(c.red), change(c.green), change(c.blue)}; };
  const auto least = [&c] { return std::min({c.red, c.green, c.blue}); };
  const auto greatest = [&c] { return std::max({c.red, c.green, c.blue}); };
  if (how.turn != 0) {
    uint8_t r, g, b;
    hueToRgb((rgbToHue(pixel.r, pixel.g, pixel.b) + how.turn) % 1530, &r, &g, &b);
    const int n = least(), d = greatest() - n;
    c = {n + r * d / 255, n + g * d / 255, n + b * d / 255};
    if (how.keepsLuma)
      c = withLuma(c, luma(in));
  }
  if (how.saturation != 0) {
    const int y = luma(c);
    int g = 4096 + how.saturation;
    if (how.saturation > 0) {
      g = 4096 + 3 * how.saturation;
      if (greatest() > y)
        g = std::min(g, (255 - y) * 4096 / (greatest() - y));
      if (least() < y)
        g = std::min(g, y * 4096 / (y - least()));
    }
    each([=](int v) { return y + ((v - y) * g >> 12); });
  }
  if (const int l = how.lightness; l > 0)
    each([=](int v) { return v + ((255 - v) * l >> 12); });
  else
    each([=](int v) { return v * (4096 + l) >> 12; });
  if (how.tintAmount != 0) {
    const uint32_t tint = how.tint[luma(c)];
    const auto mix = [&how](int v, uint32_t t) { return v + ((int(t & 255) - v) * how.tintAmount >> 12); };
    c = {mix(c.red, tint >> 16), mix(c.green, tint >> 8), mix(c.blue, tint)};
  }
  if (how.isLimited) {
    const int k = recolorShare(in, how);
    c = {in.red + ((c.red - in.red) * k >> 12), in.green + ((c.green - in.green) * k >> 12),
         in.blue + ((c.blue - in.blue) * k >> 12)};
  }
  return {uint8_t(c.blue), uint8_t(c.green), uint8_t(c.red), pixel.a};
}

} // namespace zol::plain
