// Rows of fragments that are put together.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

// takeAway       pixels less the part of them that is gone, 256 = all or more: alpha
//                (a (256 - gone) + 128) >> 8; 0 where that is 0.
// gatherPixels   pieces that meet, each a pixel's part: of alpha m and colour u over the layer's a and l stay
//                k = min(a, 255 - m): alpha m + k, colours (m u + k l) / (m + k), rounded down.
ZOL_LEVELS_TO(avx2, void takeAway(const _color_t *pixels, const uint16_t *gone, _color_t *out, int count);
              void gatherPixels(_color_t *layer, const _color_t *piece, int count);)

} // namespace zol
