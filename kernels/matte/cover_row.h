// Pixels cut out by a mask.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

namespace zol {

ZOL_LEVELS_TO(avx2,
              /// With m the mask's alpha the pixels' becomes (alpha m + 127) / 255; where that is 0 nothing
              /// is left of them.
              void coverRow(_color_t *pixels, const _color_t *mask, int count);)

} // namespace zol
