// The pixel work of deinterlacing, a line at a time.
#pragma once

#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// A line and its neighbours, pixels as words 0xAARRGGBB.
struct DeinterlaceLines {
  const uint32_t *above, *at, *below;
};

/// Measures are written and read in whole vectors: room for this many elements past the last pixel.
inline constexpr int kCombingPadding = 16;

ZOL_LEVELS(
    /// How combed each pixel is; edgeSquared scales how much a difference between the lines around it
    /// excuses, products and shifts being those of signed 32-bit numbers.
    void combingOfLine(const DeinterlaceLines &lines, int width, uint32_t edgeSquared, int32_t *combing);

    /// Writes the line `at`, its pixels rebuilt where the combing of the three lines, 1 2 1, exceeds the
    /// limit: by the 1 2 1 blend, or by the mean of the neighbours.
    void repairLine(const DeinterlaceLines &lines, const int32_t *const combing[3], int width, int32_t limit,
                    bool blend, uint32_t *out);)

} // namespace zol
