// The blur in one direction: lines of bytes, each the tent-weighted mean of its neighbours before and after.
#pragma once

#include "kernels/blur/tent.h"
#include "kernels/simd/levels.h"

#include <cstddef>
#include <cstdint>

namespace zol {

/// Bytes side by side that are filtered together, and what their number must be a multiple of.
inline constexpr int kTentMaxLanes = 128;
inline constexpr int kTentLaneGroup = 64;

/// Lines to filter, 0 to count - 1; others count as absent. Those that are looked at, from `begin` on, are at
/// hand: line k at lines + (k - begin) * stride.
struct TentSource {
  const uint8_t *lines;
  ptrdiff_t stride;
  int begin;
  int count;
};

/// What one call leaves for the next, an element a lane in an order of the filter's own. All are zero before
/// the first line, which is line -reach.
struct TentSums {
  int32_t *weighted;
  int16_t *slopes;
  int16_t *groups; ///< StepGroups::keptLines() times as many
};

/// Goes from line `from` up to line `to`, exclusive, and writes those that are not negative to dst: for each
/// of `lanes` bytes the weighted sum of the lines present, divided by their weights and truncated.
ZOL_LEVELS(void tentLines(const Tent &tent, const StepGroups &groups, const TentSource &source, int from,
                          int to, int lanes, const TentSums &sums, uint8_t *dst, ptrdiff_t dstStride);)

} // namespace zol
