// Where on a ramp of colours the pixels of a gradient lie.
#pragma once

#include "kernels/color/color_ramp.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// What is seen before a gradient's beginning and behind its end.
enum class GradientEnds { hold, repeat, mirror };

/// How positions become places of the ramp.
struct GradientTurn {
  int32_t offset = 0; ///< is taken off positions; 65536 = 1.0
  GradientEnds ends = GradientEnds::hold;
};

// linearPlaces   positions first + i step, 2^32 = 1.0, of which bits 16 to 47 count.
// radialPlaces   positions by the distance from the centre, `scale` each pixel (65536 = 1.0), at most 2^30;
//                of pixels across[i] to the right of the centre and `down` below it.
// conicalPlaces  positions by the turn around the centre, clockwise from the right, less `angle` (65536 = a
//                turn); of the same pixels. The centre itself counts as lying to the right.
ZOL_LEVELS_TO(avx2, void linearPlaces(int64_t first, int64_t step, const GradientTurn &turn, int32_t *places,
                                      int count);
              void radialPlaces(const float *across, float down, float scale, const GradientTurn &turn,
                                int32_t *places, int count);
              void conicalPlaces(const float *across, float down, int32_t angle, const GradientTurn &turn,
                                 int32_t *places, int count);)

} // namespace zol
