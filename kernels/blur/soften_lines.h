// The soft blur in one direction: three boxes in a row over lines of 16-bit values.
#pragma once

#include "kernels/simd/levels.h"

#include <cstddef>
#include <cstdint>

namespace zol {

/// Values side by side that are softened together: a cache line of them.
inline constexpr int kSoftLanes = 32;

/// A box whose ends are weighed by fractions, so that it widens without steps: of three of them in a row the
/// variance is that of a tent. The weights sum up to more than 2^15 and at most 2^16.
struct SoftBox {
  /// Radii of 0 and less, or NaN, are a copy; beyond 65536 nothing grows.
  explicit SoftBox(double radius);

  [[nodiscard]] bool isCopy() const { return reach == 0 && part == 0; }

  int reach = 0;    ///< lines on either side that weigh as much as the middle one
  int whole = 1;    ///< their weight
  int part = 0;     ///< the weight of the next one on either side, at most `whole`
  uint32_t sum = 1; ///< of all weights
  /// Any n below 2^16 weighted by the weights gives n / sum, rounded, as (n + rounding) * reciprocal >> 47.
  uint32_t rounding = 0, reciprocal = 0;
};

/// Softens `count` lines, at least one, of kSoftLanes values from src into dst, which may be src. The first
/// and the last line repeat outside. Works in `work`, twice as many lines.
ZOL_LEVELS(void softenLines(const SoftBox &box, const uint16_t *src, ptrdiff_t srcStride, int count,
                            uint16_t *work, uint16_t *dst, ptrdiff_t dstStride);)

} // namespace zol
