#include "kernels/noise/spread_rows.h"

#include "kernels/noise/hash.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kStretch = 256; // columns at once

int floorDivided(int a, int b) { return a / b - (a % b < 0); }

/// The hashes of the cells of columns left, left + 1 and so on.
void hashColumns(uint32_t row, int left, int count, int cellWidth, uint32_t *hashes) {
  if (cellWidth > 1) {
    int cell = floorDivided(left, cellWidth), within = left - cell * cellWidth;
    for (int i = 0; i < count; ++cell, within = 0) {
      const uint32_t shared = mixBits(row + static_cast<uint32_t>(cell));
      for (; i < count && within < cellWidth; ++i, ++within)
        hashes[i] = shared;
    }
    return;
  }
  U32xN columns{};
  for (int i = 0; i < kLanes<U32xN>; ++i)
    columns[i] = static_cast<uint32_t>(i);
  for (int i = 0; i < count; i += kLanes<U32xN>)
    store(hashes + i, mixBits(row + static_cast<uint32_t>(left + i) + columns));
}

/// One coordinate of where pixels come from, within a side of the picture.
struct Side {
  int size, radius;
  int folds = 1 + radius / 16 / size; // that bring any place back into the picture

  [[nodiscard]] I32xN sourceOf(I32xN at, U32xN chance) const {
    at += ((as<I32xN>(chance) - 32768) * radius + (1 << 18)) >> 19;
    for (int i = 0; i < folds; ++i) {
      at ^= at >> 31; // -1 is 0
      at = min(at, 2 * size - 1 - at);
    }
    return at;
  }
};

} // namespace

void spreadRow(const pic &from, int y, _color_t *out, const Spreading &how) {
  if (from.Width <= 0)
    return;
  const Side across{from.Width, how.radiusX}, down{from.Height, how.radiusY};
  const auto cellRow = static_cast<uint32_t>(floorDivided(from.Y + y, how.cellHeight));
  const uint32_t row = hashRow(how.seed, how.step, cellRow);
  I32xN columns{};
  for (int i = 0; i < kLanes<I32xN>; ++i)
    columns[i] = i;
  uint32_t hashes[kStretch];
  int sourceX[kStretch], sourceY[kStretch];
  for (int x = 0; x < from.Width; x += kStretch) {
    const int count = from.Width - x < kStretch ? from.Width - x : kStretch;
    hashColumns(row, from.X + x, count, how.cellWidth, hashes);
    for (int i = 0; i < count; i += kLanes<I32xN>) {
      const auto chance = load<U32xN>(hashes + i);
      store(sourceX + i, across.sourceOf(x + i + columns, chance & 0xFFFF));
      store(sourceY + i, down.sourceOf(splat<I32xN>(y), chance >> 16));
    }
    for (int i = 0; i < count; ++i)
      out[x + i] = from.Pixels[ptrdiff_t{sourceY[i]} * from.Width + sourceX[i]];
  }
}

} // namespace zol::ZOL_LEVEL
