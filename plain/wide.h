// Wide values in their plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cstdint>

namespace zol::plain {

/// Blue, green, red, alpha.
using Wide = uint16_t[4];

inline void toWide(const _color_t &p, Wide out) {
  out[0] = static_cast<uint16_t>(p.b * p.a);
  out[1] = static_cast<uint16_t>(p.g * p.a);
  out[2] = static_cast<uint16_t>(p.r * p.a);
  out[3] = static_cast<uint16_t>(255 * p.a);
}

/// What is added at the frame's pixel (x, y): 127, or where dithered one of 64 values.
inline int roundingTerm(bool dithered, int x, int y) {
  if (!dithered)
    return 127;
  int place = 0;
  for (int bit = 0; bit < 3; ++bit)
    place = place * 4 + ((x >> bit ^ y >> bit) & 1) * 2 + (y >> bit & 1);
  return (4 * place + 2) * 255 >> 8;
}

inline uint8_t wideToByte(int value, int term) {
  return static_cast<uint8_t>(std::min((value + term) / 255, 255));
}

inline _color_t toBytes(const Wide wide, int term, const _color_t &hidden) {
  const int alpha = wide[3];
  const uint8_t a = wideToByte(alpha, term);
  if (a == 0)
    return {hidden.b, hidden.g, hidden.r, 0};
  const auto color = [&](int c) {
    return static_cast<uint8_t>(std::min((255 * c + term * alpha / 255) / alpha, 255));
  };
  return {color(wide[0]), color(wide[1]), color(wide[2]), a};
}

} // namespace zol::plain
