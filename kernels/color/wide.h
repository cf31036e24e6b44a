// Wide values: 16 bits a channel, 65025 = 1.0, colours times alpha. What is combined in them weighs by alpha.
#pragma once

#include "frame/zol.h"
#include "kernels/color/dither.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

inline constexpr int kWideOne = 65025;

/// Alpha is 255 a, a colour c a: none exceeds its alpha.
struct WidePixel {
  uint16_t b, g, r, a;
};

/// What is added to a row of wide values before they are cut to bytes, 0 to 254 of a byte's 255. Values that
/// are a byte's exactly stay so whatever is added.
struct Rounding {
  static constexpr int kPeriod = kDitherPeriod;

  static constexpr Rounding nearest() {
    Rounding rounding;
    for (uint16_t &term : rounding.terms)
      term = 127;
    return rounding;
  }

  /// An ordered pattern that stands still in the frame, for the row that begins at its pixel (x, y).
  static constexpr Rounding dithered(int x, int y) {
    Rounding rounding;
    for (uint16_t &term : rounding.terms)
      term = static_cast<uint16_t>((4 * ditherPlace(x++, y) + 2) * 255 >> 8);
    return rounding;
  }

  uint16_t terms[2 * kPeriod] = {}; ///< of the row's first columns, for vectors of up to so many
};

// toWide       pixels in wide values.
// toBytes      and back: alpha a = (A + t) / 255, colours (255 C + t A / 255) / A, limited to 255, t being
// the
//              column's term. Where a is 0 the colours are those of `hidden`, or 0 where that is null; it may
//              be `out`.
// alphaToWide  the pixels' alphas alone.
// wideToAlpha  and back, into bytes.
ZOL_LEVELS_TO(avx2, void toWide(const _color_t *pixels, WidePixel *wide, int count);
              void toBytes(const WidePixel *wide, const Rounding &rounding, const _color_t *hidden,
                           _color_t *out, int count);
              void alphaToWide(const _color_t *pixels, uint16_t *wide, int count);
              void wideToAlpha(const uint16_t *wide, const Rounding &rounding, uint8_t *alpha, int count);)

} // namespace zol
