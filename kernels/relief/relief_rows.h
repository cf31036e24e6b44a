// Pixels lit as if they lay on ground of different heights.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

struct Vector3 {
  float x, y, z;
};

/// What falls on ground of different heights. Ground that is flat stays as it is, whatever the light.
struct Relief {
  float across, down; ///< slopes that sums of heights make: eight times as much as from pixel to pixel
  bool isPoint =
      false; ///< whether `light` is a place in the frame, in pixels across, else a direction of length 1
  Vector3 light;
  float aspect = 1;  ///< of a pixel: what is so many rows down is less far by this factor
  float ambient = 0; ///< light that comes from everywhere, 1.0 = all

  /// Shine is the cosine between the ground and the direction halfway from the light to the eye, squared so
  /// many times and on to once more by a part.
  float shine = 0; ///< 1.0 = all
  int squarings = 0;
  float part = 0;
  uint32_t color = 0; ///< of shine, 0xRRGGBB
};

// heightRow  heights of pixels: luma times alpha, or alpha alone; 65025 = 1.0.
// reliefRow  lights a row, the pixel (x, y) of the frame and those to its right, with the heights of the rows
//            above and below it and its own; `lit` is another row. Alpha stays, and all of a pixel without
//            any.
ZOL_LEVELS(void heightRow(const _color_t *pixels, bool ofAlpha, uint16_t *heights, int count);
           void reliefRow(const Relief &relief, const _color_t *pixels, const uint16_t *above,
                          const uint16_t *heights, const uint16_t *below, int x, int y, int count,
                          _color_t *lit);)

} // namespace zol
