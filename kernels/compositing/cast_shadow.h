// A shadow from a plane of alphas, row by row.
#pragma once

#include "frame/zol.h"
#include "kernels/color/wide.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

// thicken     in place: alpha times gain, 4096 = 1.0 and at most 65535, limited to 65025.
// castShadow  out = the colour with `opacity`, 4096 = 1.0 at the most, of each wide alpha, brought to bytes
// as
//             the row's terms say. Where that is 0 the colours are those of `hidden`.
ZOL_LEVELS_TO(avx2, void thicken(uint16_t *alpha, int count, int gain);
              void castShadow(const uint16_t *alpha, int opacity, const Rounding &rounding, _color_t color,
                              const _color_t *hidden, _color_t *out, int count);)

} // namespace zol
