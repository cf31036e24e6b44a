// A row of pixels between two rows of a picture, sampled at sixteenths of a pixel.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

namespace zol {

/// out[i] from top[i], top[i + 1], bottom[i] and bottom[i + 1] by the weights of (fx, fy) sixteenths and by
/// their alphas: with A the sum of weight and alpha, the alpha is (A + 128) >> 8 and a colour (the sum of
/// weight, alpha and colour, + A / 2) / A; 0 where A is 0. Both rows have count + 1 pixels.
ZOL_LEVELS_TO(avx2, void moveRow(const _color_t *top, const _color_t *bottom, int fx, int fy, _color_t *out,
                                 int count);)

} // namespace zol
