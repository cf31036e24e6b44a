// From areas in cells to coverages in bytes.
#pragma once

#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// Pixels that are marked together.
inline constexpr int kCoverBlock = 16;

/// Sums up the cells of `blocks` blocks and takes min(sum, 131072) / 131072 of 255, rounded, times
/// brightness / 256, into the bytes by maximum. Cells and marks, which stand where a block is not all 0, are
/// 0 afterwards.
ZOL_LEVELS_TO(avx2,
              void coverRow(uint32_t *cells, uint32_t *marks, int blocks, int brightness, uint8_t *bytes);)

} // namespace zol
