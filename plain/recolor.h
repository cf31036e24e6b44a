// Recolor in its plain form: one pixel, every step and division written out.
#pragma once

#include "frame/zol.h"
#include "plain/color_models.h"
#include "plain/luma.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace zol::plain {

/// The step of a wheel of 1530 colours: red 0, yellow 255, green 510, cyan 765, blue 1020, magenta 1275.
inline int wheelStep(int r, int g, int b) {
  const int least = std::min({r, g, b}), greatest = std::max({r, g, b}), d = greatest - least;
  if (d == 0)
    return 0;
  const auto way = [=](int middle) { return ((middle - least) * 255 + d - 1) / d; };
  if (b == least && r == greatest)
    return way(g);
  if (b == least)
    return 510 - way(r);
  if (r == least && g == greatest)
    return 510 + way(b);
  if (r == least)
    return 1020 - way(g);
  return b == greatest ? 1020 + way(r) : 1530 - way(b);
}

inline Channels wheelColor(int h) {
  const auto part = [h](int fullest) { // a third of the wheel on either side of a channel it falls to 0
    const int way = (h - fullest + 1530) % 1530;
    return std::clamp(510 - std::min(way, 1530 - way), 0, 255);
  };
  return {{part(1020), part(510), part(0)}};
}

/// How much a colour changes, 4096 = 1.0.
template <class Recoloring> int recolorShare(_color_t in, const Recoloring &how) {
  uint8_t hue, lightness, chroma;
  rgbToHls(&hue, &lightness, &chroma, in.r, in.g, in.b);
  int d = std::abs(hue - how.hue);
  if (d > 127)
    d = 255 - d;
  const int r = how.range, f = how.fading;
  int k = 16 * d <= r ? 4096 : 16 * d >= r + f ? 0 : 4096 * (r + f - 16 * d) / f;
  if (how.fullChroma > 0)
    k = k * std::min<int>(chroma, how.fullChroma) / how.fullChroma;
  return k;
}

/// `how` names the steps as the kernel's settings do.
template <class Recoloring> _color_t recolor(_color_t pixel, const Recoloring &how) {
  const Channels in = {{pixel.b, pixel.g, pixel.r}};
  Channels p = in;
  const auto least = [&p] { return *std::min_element(p.c, p.c + 3); };
  const auto greatest = [&p] { return *std::max_element(p.c, p.c + 3); };
  if (how.turn != 0) {
    const Channels wheel = wheelColor((wheelStep(pixel.r, pixel.g, pixel.b) + how.turn) % 1530);
    const int n = least(), d = greatest() - n;
    for (int i = 0; i < 3; ++i)
      p.c[i] = n + wheel.c[i] * d / 255;
    if (how.keepsLuma)
      p = movedToLuma(p, lumaOf(in));
  }
  if (how.saturation != 0) {
    const int y = lumaOf(p);
    int g = 4096 + how.saturation;
    if (how.saturation > 0) {
      g = 4096 + 3 * how.saturation;
      if (greatest() > y)
        g = std::min(g, (255 - y) * 4096 / (greatest() - y));
      if (least() < y)
        g = std::min(g, y * 4096 / (y - least()));
    }
    for (int &c : p.c)
      c = y + ((c - y) * g >> 12);
  }
  for (int &c : p.c)
    c = how.lightness > 0 ? c + ((255 - c) * how.lightness >> 12) : c * (4096 + how.lightness) >> 12;
  if (how.tintAmount != 0) {
    const uint32_t tint = how.tint[lumaOf(p)];
    for (int i = 0; i < 3; ++i)
      p.c[i] += (static_cast<int>(tint >> 8 * i & 255) - p.c[i]) * how.tintAmount >> 12;
  }
  const int k = how.isLimited ? recolorShare(pixel, how) : 4096;
  for (int i = 0; i < 3; ++i)
    p.c[i] = in.c[i] + ((p.c[i] - in.c[i]) * k >> 12);
  return {uint8_t(p.c[0]), uint8_t(p.c[1]), uint8_t(p.c[2]), pixel.a};
}

} // namespace zol::plain
