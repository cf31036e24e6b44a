// Row kernels of the glow.
#pragma once

#include "kernels/color/wide.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// What of a picture glows; 4096 = 1.0.
struct GlowSource {
  bool outline;  ///< all of it, else what is brighter than `threshold`
  int threshold; ///< a byte
  _color_t color;
  int tint; ///< how far the light takes on the colour
};

enum class GlowMode { screen, add, behind };

/// How the glow and the picture come together.
struct GlowLook {
  int intensity; ///< 4096 = 1.0, up to 16.0
  GlowMode mode;
  bool only; ///< without the picture
};

// lightRow      the light of pixels. With w = (Y - threshold) 4096 / (255 - threshold) where the luma Y is
//               above, else 0, or 4096 for the outline: alpha 255 a w >> 12 and colours c a w >> 12, each
//               moved towards y color / 255 by tint, y being Y a w >> 12 or the outline's alpha.
// halveColumns  (a + 3 b + 3 c + d + 4) >> 3 of four rows.
// halveRow      the same along a row: out[i] of in[2 i - 1] to in[2 i + 2], which are read up to the next
//               whole vector.
// doubleColumns (3 near + far + 2) >> 2 of two rows.
// doubleRow     the same along a row: out[2 i] of in[i] and in[i - 1], out[2 i + 1] of in[i] and in[i + 1];
//               rows are read and written up to the next whole vector.
// mixWide       (row (4096 - s) + other s + 2048) >> 12, written to row.
// layGlow       the glow and pixels: with E the glow times intensity >> 12, limited to 65025, and A, P the
//               pixels' wide values or 0: alpha A' = A + E - A E / 65025; colours P + E - P E / 65025
//               (screen), the lesser of P + E and A' (add), P + E (65025 - A) / 65025 (behind).
ZOL_LEVELS_TO(avx2,
              void lightRow(const _color_t *pixels, const GlowSource &source, WidePixel *out, int width);
              void halveColumns(const WidePixel *a, const WidePixel *b, const WidePixel *c,
                                const WidePixel *d, WidePixel *out, int width);
              void halveRow(const WidePixel *in, WidePixel *out, int outWidth);
              void doubleColumns(const WidePixel *near, const WidePixel *far, WidePixel *out, int width);
              void doubleRow(const WidePixel *in, WidePixel *out, int inWidth);
              void mixWide(WidePixel *row, const WidePixel *other, int s, int width);
              void layGlow(const WidePixel *glow, const GlowLook &look, const _color_t *pixels,
                           WidePixel *out, int width);)

/// Pixels before and behind a row that the kernels above read or write.
inline constexpr int kGlowMargin = 16;

} // namespace zol
