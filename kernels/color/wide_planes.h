// Pictures taken apart into planes of wide values, for kernels that work on one plane at a time.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// Rows of four planes, as in WidePixel.
struct WidePlanes {
  uint16_t *b, *g, *r, *a;
};

// toPlanes       pixels in wide values.
// planesToBytes  and back, rounded to the nearest; 0 where alpha is 0.
ZOL_LEVELS_TO(avx2, void toPlanes(const _color_t *pixels, const WidePlanes &planes, int count);
              void planesToBytes(const WidePlanes &planes, _color_t *out, int count);)

} // namespace zol
