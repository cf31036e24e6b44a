// The colour keyer over one row.
#pragma once

#include "frame/zol.h"
#include "kernels/keying/weight_and_alpha.h"
#include "kernels/simd/levels.h"

namespace zol {

/// The number of sums of three channel distances, 0 to 765.
constexpr int kDistanceSums = 766;

// colorKeyRow  out = foreground laid on background by the weight and alpha of its distance from the colour.
// underlayRow  out = background with alpha 0.
ZOL_LEVELS_TO(avx2, void colorKeyRow(const _color_t *foreground, const _color_t *background, _color_t *out,
                                     int width, _color_t color, const WeightAndAlpha *byDistanceSum);
              void underlayRow(const _color_t *background, _color_t *out, int width);)

} // namespace zol
