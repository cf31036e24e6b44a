// Particles laid one over another, and what they make together laid over a picture.
#pragma once

#include "kernels/color/wide.h"
#include "kernels/simd/levels.h"

namespace zol {

/// Of a layer: colours times alpha, 32768 = 1.0.
inline constexpr int kLayerOne = 32768;

/// What wide values are multiplied by to become a layer's.
inline constexpr int kInkOne = 33026;

/// Kernels of layers lay whole vectors: so many pixels further rows are read and written, as they were.
inline constexpr int kLayerPadding = 8;

/// What a particle's value v, 65025 = 1.0, gives a pixel: S = v ink >> 16 in each channel.
struct Ink {
  WidePixel factors; ///< kInkOne = 1.0; no colour above the alpha
  bool adds;         ///< P = min(32768, P + S), else S + (P (32768 - alpha of S) >> 15)
};

/// A soft dot's part of a layer.
struct Dot {
  WidePixel *layer; ///< of its first pixel
  ptrdiff_t stride;
  int width, height;
  float x, y;         ///< the first pixel's middle from the dot's, in radii of kDotRadius
  float stepX, stepY; ///< of one pixel
};

/// Where d² reaches 1.0, (1 - d²) 255 256 is 0.
inline constexpr int kDotEdge = 65280;
inline constexpr float kDotRadius = 255.49951F; ///< its root

// layDot        v = u u >> 16, u = max(0, kDotEdge - X - Y), X and Y being the squares of distances, cut to
//               integers. `squares` has room for 4 (width + kLayerPadding).
// layMask       v = 255 mask.
// layValues     values whose top bits are turned.
// layOver       lays the layer over pixels in straight alpha and clears it: with R = 32768 - P's alpha and
//               d the pixel's alpha, T = 255 P + d R, the alpha becomes (T + 16384) >> 15 and a colour
//               (65025 P + c d R + T / 2) / T, and (255 P + c R + 16384) >> 15 where d is 255. Where P has no
//               alpha the pixel stays.
// halveValues   the mean of four: (a + b + 1) >> 1 of upper and lower, (a + b) >> 1 of both neighbours.
ZOL_LEVELS_TO(avx2, void layDot(const Dot &dot, const Ink &ink, uint16_t *squares);
              void layMask(WidePixel *layer, const uint8_t *mask, int count, const Ink &ink);
              void layValues(WidePixel *layer, const WidePixel *values, int count, const Ink &ink);
              void layOver(_color_t *pixels, WidePixel *layer, int count);
              void halveValues(const WidePixel *upper, const WidePixel *lower, WidePixel *half, int count);)

} // namespace zol
