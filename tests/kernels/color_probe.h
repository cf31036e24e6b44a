// What level sources share for colours, as the tests reach it: every level's form over rows of pixels.
#pragma once

#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

ZOL_LEVELS(
    /// Colours (0xRRGGBB) moved to lumas, 64 at a time.
    void withLumas(const uint32_t *colors, const uint32_t *lumas, uint32_t *out);)

} // namespace zol
