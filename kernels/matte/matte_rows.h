// Rows of mattes: bytes made of pixels, changed, and put back as alpha.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

enum class MatteSource { alpha, luma, red, green, blue, opaque };
inline constexpr int kMatteSources = 6;

// matteRow   a matte of pixels; luma and colours count as much as there is alpha.
// lookUpRow  levels[each].
// invertRow  255 less each.
// maskRow    each times the alpha of its mask, 255 = 1.0, rounded to the nearest.
// fadeRow    each times `share`, 4096 = 1.0.
// widenRow   each in wide values, 255 times as much; the matte may stand in their upper half.
// amplifyRow  wide values times gain / 256 (0 to 4096), at most 1.0, in bytes, rounded.
// greyRow    opaque grey pixels of a matte.
ZOL_LEVELS_TO(avx2, void matteRow(const _color_t *pixels, MatteSource source, uint8_t *matte, int count);
              void lookUpRow(const uint8_t (&levels)[256], uint8_t *matte, int count);
              void invertRow(uint8_t *matte, int count);
              void maskRow(const _color_t *mask, uint8_t *matte, int count);
              void fadeRow(uint8_t *matte, int share, int count);
              void widenRow(const uint8_t *matte, uint16_t *wide, int count);
              void amplifyRow(const uint16_t *wide, int gain, uint8_t *matte, int count);
              void greyRow(const uint8_t *matte, _color_t *pixels, int count);)

inline bool isIdentity(const uint8_t (&levels)[256]) {
  for (int x = 0; x < 256; ++x)
    if (levels[x] != x)
      return false;
  return true;
}

} // namespace zol
