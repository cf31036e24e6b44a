// Pixels without alpha, whose colours say nothing: rows of the steps that give them others.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

namespace zol {

// halveRow   rows of `width` pixels, of which the lower one may be null, for transparent, at half the size:
//            alpha is the mean of four, rounded up, and a colour the mean weighed by alpha, 0 where there is
//            none. An odd last column stands beside a transparent one.
// adoptRow   gives pixels of alpha 0 the halves they stand in: pixel i is part of halves[i / 2].
// extendRow  gives those of `pixels` that have alpha, and had none in `before`, the colours of their halves.
ZOL_LEVELS_TO(avx2, void halveRow(const _color_t *upper, const _color_t *lower, int width, _color_t *half);
              void adoptRow(const _color_t *halves, _color_t *pixels, int count);
              void extendRow(const _color_t *before, const _color_t *halves, _color_t *pixels, int count);)

} // namespace zol
