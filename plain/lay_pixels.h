// Pixels laid over others in their plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"
#include "plain/luma.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace zol::plain {

inline int mul(int x, int y) { return (x * y + 127) / 255; }
inline int scr(int x, int y) { return 255 - mul(255 - x, 255 - y); }
inline int hardLight(int l, int u) { return u < 128 ? mul(l, 2 * u) : scr(l, 2 * u - 255); }

/// Modes in the order of the effects' items, but the last two.
inline int blendChannel(int mode, int l, int u) {
  switch (mode) {
  case 1: return mul(l, u);
  case 2: return scr(l, u);
  case 3: return hardLight(u, l);
  case 4: return std::min(l, u);
  case 5: return std::max(l, u);
  case 6: return l == 0 ? 0 : u == 255 ? 255 : std::min(255, 255 * l / (255 - u));
  case 7: return l == 255 ? 255 : u == 0 ? 0 : std::max(0, 255 - 255 * (255 - l) / u);
  case 8: return hardLight(l, u);
  case 9: return std::min(255, mul(255 - l, mul(l, u)) + mul(l, scr(l, u)));
  case 10: return std::abs(l - u);
  case 11: return std::clamp(l + u - 2 * mul(l, u), 0, 255);
  case 12: return std::min(255, l + u);
  case 13: return std::max(0, l - u);
  default: return u;
  }
}

inline Channels blend(int mode, const Channels &l, const Channels &u) {
  if (mode == 14)
    return movedToLuma(u, lumaOf(l));
  if (mode == 15)
    return movedToLuma(l, lumaOf(u));
  Channels out = {};
  for (int i = 0; i < 3; ++i)
    out.c[i] = blendChannel(mode, l.c[i], u.c[i]);
  return out;
}

/// `opacity` is 4096 = 1.0.
inline _color_t layPixel(const _color_t &lower, const _color_t &upper, int mode, int opacity, bool inside) {
  const int m = upper.a * opacity >> 12, d = lower.a;
  if (m == 0)
    return lower;
  const Channels l = {{lower.b, lower.g, lower.r}}, u = {{upper.b, upper.g, upper.r}};
  const Channels both = blend(mode, l, u);
  const int w1 = m * d, w2 = m * (255 - d), w3 = d * (255 - m), w = w1 + w2 + w3;
  uint8_t out[3];
  for (int i = 0; i < 3; ++i)
    out[i] = static_cast<uint8_t>(inside ? (m * both.c[i] + (255 - m) * l.c[i]) / 255
                                         : (w1 * both.c[i] + w2 * u.c[i] + w3 * l.c[i]) / w);
  return {out[0], out[1], out[2], static_cast<uint8_t>(inside ? d : w / 255)};
}

} // namespace zol::plain
