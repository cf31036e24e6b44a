// Spread in its plain form: one pixel after the other.
#pragma once

#include "frame/zol.h"
#include "kernels/noise/hash.h"
#include "kernels/noise/spread_rows.h"

#include <cmath>
#include <cstddef>

namespace zol::plain {

inline int spreadSource(int at, int chance, int radius, int size) {
  at += static_cast<int>((int64_t{chance - 32768} * radius + (1 << 18)) >> 19);
  while (at < 0 || at >= size)
    at = at < 0 ? -1 - at : 2 * size - 1 - at;
  return at;
}

inline _color_t spread(const pic &from, int x, int y, const Spreading &how) {
  const auto cell = [](int at, int size) {
    return static_cast<uint32_t>(static_cast<int>(std::floor(double(at) / size)));
  };
  const uint32_t h =
      hash(how.seed, how.step, cell(from.Y + y, how.cellHeight), cell(from.X + x, how.cellWidth));
  const int sx = spreadSource(x, static_cast<int>(h & 65535), how.radiusX, from.Width);
  const int sy = spreadSource(y, static_cast<int>(h >> 16), how.radiusY, from.Height);
  return from.Pixels[ptrdiff_t{sy} * from.Width + sx];
}

} // namespace zol::plain
