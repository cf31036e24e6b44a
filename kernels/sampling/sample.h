// Bilinear samples at sixteenths of a pixel.
#pragma once

#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// A distance in whole pixels, rounded down, and the sixteenths beyond.
struct Sixteenths {
  explicit constexpr Sixteenths(int sixteenths) : whole(sixteenths >> 4), part(sixteenths & 15) {}
  int whole, part;
};

/// The weights of the pixel left of and above a position, of its right neighbour, of those below; sum 256.
struct SampleWeights {
  /// `fx` sixteenths to the right of the first pixel and `fy` below it.
  constexpr SampleWeights(int fx, int fy)
      : topLeft(static_cast<int16_t>((16 - fx) * (16 - fy))), topRight(static_cast<int16_t>(fx * (16 - fy))),
        bottomLeft(static_cast<int16_t>((16 - fx) * fy)), bottomRight(static_cast<int16_t>(fx * fy)) {}

  int16_t topLeft, topRight, bottomLeft, bottomRight;
};

/// out[i] = (the weighted sum of top[i], top[i + 1], bottom[i] and bottom[i + 1], + 128) >> 8: both rows have
/// count + 1 values.
ZOL_LEVELS_TO(avx2, void sampleRow(const uint16_t *top, const uint16_t *bottom, const SampleWeights &weights,
                                   uint16_t *out, int count);)

} // namespace zol
