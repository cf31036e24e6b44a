// Zone plates: rings that grow finer towards the edges.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// Phases along a row, 2^32 = a turn: of the first pixel, how much more that of the second is, and how much
/// more this grows from pixel to pixel.
struct ZonePhases {
  uint32_t first, step, change;
};

ZOL_LEVELS_TO(avx2,
              /// Gray pixels, opaque, of 128 + 127 times the cosine.
              void zoneRow(const ZonePhases &phases, _color_t *out, int count);)

} // namespace zol
