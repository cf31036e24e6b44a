// One colour laid over pixels through a mask, in straight alpha.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

ZOL_LEVELS_TO(avx2,
              /// Lays the colour (0xRRGGBB) over `count` pixels with the alphas of the mask. With m the
              /// mask's and d the pixel's alpha, w = 255 m and v = d (255 - m): the alpha becomes (w + v) /
              /// 255 and every colour channel (w colour + v pixel) / (w + v), both truncated. Where m is 0
              /// the pixel stays as it is.
              void layColor(_color_t *pixels, const _color_t *mask, int count, unsigned colour);
              /// The same through a mask of bytes and with a colour of some alpha (0xAARRGGBB), by which the
              /// mask is multiplied, rounded to the nearest.
              void layColorOnBytes(_color_t *pixels, const uint8_t *mask, int count, unsigned colour);)

} // namespace zol
