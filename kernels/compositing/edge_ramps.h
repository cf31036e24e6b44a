// Shapes with straight or round edges along a row: how much of each pixel they cover, 256 = whole.
#pragma once

#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// The coverage on one side of an edge: in the frame's column x start + slope x, within 0..256, rounded down.
struct EdgeRamp {
  float start, slope;
};

/// What becomes of the coverages of two sides a and b.
enum class RampJoin {
  least,    ///< the lesser; of any number of sides
  both,     ///< what is in both where they overlap as little as they can: a + b - 256
  greatest, ///< the greater
  either,   ///< what is in any where they overlap as little as they can: a + b
};

struct RampShape {
  RampJoin join;
  const EdgeRamp *ramps;
  int count;
  float most = 256; ///< of `least`
};

/// What lies within a circle: in column x start - scale times the distance of (perColumn x + column, down)
/// from 0.
struct RoundRamp {
  float start, scale, perColumn, column, down;
};

/// What lies between two rays from one point, the second of which is soft. Where a pixel is: inside either
/// ray's line, and along it from the point on; in pixels.
struct WedgeRamp {
  EdgeRamp insideFirst, alongFirst, insideLast, alongLast;
  bool isConvex; ///< at most half a turn, what is inside both lines; else what is inside either
  float steepness,
      reach; ///< of the second ray: a pixel so far inside is covered by steepness (it + reach) + 0.5
};

// Each adds a shape's coverage to that of a row's pixels, the first of which is in column `left`; no sum
// exceeds 256.
void addShape(const RampShape &shape, int left, int width, uint16_t *coverage);
void addRound(const RoundRamp &round, int left, int width, uint16_t *coverage);

// The same where a coverage changes from pixel to pixel.
ZOL_LEVELS_TO(avx2, void addRamps(const RampShape &shape, int left, int width, uint16_t *coverage);
              void addRoundRamp(const RoundRamp &round, int left, int width, uint16_t *coverage);
              void addWedgeRamp(const WedgeRamp &wedge, int left, int width, uint16_t *coverage);)

} // namespace zol
