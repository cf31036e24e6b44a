// The colour models in their plain form, every division written out.
#pragma once

#include <algorithm>
#include <cstdint>

namespace zol::plain {

inline void rgbToHls(uint8_t *H, uint8_t *L, uint8_t *S, uint8_t r, uint8_t g, uint8_t b) {
  const int mn = std::min(std::min(r, g), b);
  const int mx = std::max(std::max(r, g), b);
  *L = static_cast<uint8_t>((mn + mx + 1) >> 1);
  *S = static_cast<uint8_t>(mx - mn);
  if (mx == mn) {
    *H = 0;
    return;
  }
  const int d = mx - mn;
  const int R = (r - mn) * 255 / d, G = (g - mn) * 255 / d, B = (b - mn) * 255 / d;
  const auto f = [](int x) { return x * 42 / 255; };
  int hue;
  if (R == 0)
    hue = G == 255 ? 85 + f(B) : 170 - f(G);
  else if (G == 0)
    hue = R == 255 ? 255 - f(B) : 170 + f(R);
  else
    hue = R == 255 ? f(G) : 85 - f(R);
  *H = static_cast<uint8_t>(hue);
}

inline void hlsToRgb(uint8_t *r, uint8_t *g, uint8_t *b, uint8_t H, uint8_t L, uint8_t S) {
  int red = 0, green = 0, blue = 0;
  if (H <= 42) {
    red = 255;
    green = H * 255 / 42;
  } else if (H <= 85) {
    red = (85 - H) * 255 / 43;
    green = 255;
  } else if (H <= 127) {
    green = 255;
    blue = (H - 85) * 255 / 42;
  } else if (H <= 170) {
    green = (170 - H) * 255 / 43;
    blue = 255;
  } else if (H <= 212) {
    red = (H - 170) * 255 / 42;
    blue = 255;
  } else {
    red = 255;
    blue = (255 - H) * 255 / 43;
  }
  const int lo = L > 128 ? (L - 128) * 255 / 127 : 0;
  const int hi = L > 128 ? 255 : 255 * L / 128;
  const int base = lo + (L - lo) * (255 - S) / 255;
  const int range = hi - (hi - L) * (255 - S) / 255 - base;
  *r = static_cast<uint8_t>(red * range / 255 + base);
  *g = static_cast<uint8_t>(green * range / 255 + base);
  *b = static_cast<uint8_t>(blue * range / 255 + base);
}

} // namespace zol::plain
