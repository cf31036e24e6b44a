// Spread in its plain form: one pixel after the other.
#pragma once

#include "frame/zol.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace zol::plain {

inline uint32_t mixed(uint32_t v) {
  v ^= v >> 16;
  v *= 0x7FEB352DU;
  v ^= v >> 15;
  v *= 0x846CA68BU;
  v ^= v >> 16;
  return v;
}

inline int spreadSource(int at, int chance, int radius, int size) {
  at += static_cast<int>((int64_t{chance - 32768} * radius + (1 << 18)) >> 19);
  while (at < 0 || at >= size)
    at = at < 0 ? -1 - at : 2 * size - 1 - at;
  return at;
}

/// `how` names seed, step, cells and radii as the kernel's settings do.
template <class Spreading> _color_t spread(const pic &from, int x, int y, const Spreading &how) {
  const auto cell = [](int at, int size) {
    return static_cast<uint32_t>(static_cast<int>(std::floor(static_cast<double>(at) / size)));
  };
  const uint32_t row = mixed(mixed(mixed(how.seed) + how.step) + cell(from.Y + y, how.cellHeight));
  const uint32_t h = mixed(row + cell(from.X + x, how.cellWidth));
  const int sx = spreadSource(x, static_cast<int>(h & 65535), how.radiusX, from.Width);
  const int sy = spreadSource(y, static_cast<int>(h >> 16), how.radiusY, from.Height);
  return from.Pixels[ptrdiff_t{sy} * from.Width + sx];
}

} // namespace zol::plain
