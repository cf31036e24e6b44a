// The blur of small tents: every neighbour is taken up by itself.
#pragma once

#include "kernels/blur/tent.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// The furthest neighbours of tents that are filtered by taps; further ones are left to running sums.
inline constexpr int kTentMaxTaps = 3;

/// dst[i] = the sum of tent.weight[|d|] * taps[d][i] over -kTentMaxTaps <= d <= kTentMaxTaps, divided by
/// `weights` and truncated, for `count` bytes. dst is apart from all taps.
ZOL_LEVELS(void tentTaps(const Tent &tent, const uint8_t *const *taps, int weights, int count, uint8_t *dst);)

} // namespace zol
