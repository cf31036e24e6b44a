// Two pictures mixed pixel by pixel as a mask says, in straight alpha.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

ZOL_LEVELS_TO(avx2,
              /// With a and b the alphas of both pixels and m the mask, w = m b and v = (255 - m) a: the
              /// alpha is (w + v) / 255 and a colour (w B + v A) / (w + v), both rounded down. Where w + v is
              /// 0 nothing is left. `out` may be `first`.
              void mixByMask(const _color_t *first, const _color_t *second, const uint8_t *mask,
                             _color_t *out, int count);)

} // namespace zol
