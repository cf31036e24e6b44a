// Channels put together from pictures in their plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"
#include "plain/luma.h"

#include <cstdint>

namespace zol::plain {

/// Of a pixel: blue, green, red, alpha, luminance, nothing, all.
inline int sourceValue(const _color_t &p, int source) {
  const int values[] = {p.b, p.g, p.r, p.a, lumaOf({{p.b, p.g, p.r}}), 0, 255};
  return values[source];
}

/// `weight` is the second pixel's, 4096 = all.
inline uint8_t routed(const _color_t &first, const _color_t &second, int source, int weight, bool inverts) {
  const int x = sourceValue(first, source), y = sourceValue(second, source);
  const int value = (x * (4096 - weight) + y * weight) >> 12;
  return static_cast<uint8_t>(inverts ? 255 - value : value);
}

} // namespace zol::plain
