// Pixels scattered over their neighbourhood by chance.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// The farthest that pixels come from, in sixteenths of a pixel.
inline constexpr int kMostSpread = 65530;

struct Spreading {
  uint32_t seed = 0, step = 0;
  int cellWidth = 1, cellHeight = 1; ///< of the frame's pixels that move as one
  int radiusX = 0, radiusY = 0;      ///< in sixteenths of a pixel, 0..kMostSpread
};

ZOL_LEVELS_TO(avx2,
              /// Row y of the picture, each pixel taken from up to the radii away; beyond the picture's edges
              /// it goes on mirrored, the edge pixels doubled.
              void spreadRow(const pic &from, int y, _color_t *out, const Spreading &how);)

} // namespace zol
