// Colours between stops, as a table that rows of pixels are read from.
#pragma once

#include "frame/zol.h"
#include "kernels/color/dither.h"
#include "kernels/simd/levels.h"

#include <cstdint>
#include <span>

namespace zol {

/// A colour, straight alpha, at a position of the ramp, 65536 = 1.0.
struct ColorStop {
  int position;
  _color_t color;
};

/// 256 times a byte each, straight alpha.
struct RampColor {
  uint16_t b, g, r, a;
};

inline constexpr int kRampSteps = 4096;

/// The colours of the positions 0, 1/4096 and so on up to 1. Colours between stops weigh by alpha.
struct ColorRamp {
  /// From one stop on, positions rising; where two stand together the later one counts from there on. Before
  /// the first and behind the last the colours are theirs.
  explicit ColorRamp(std::span<const ColorStop> stops);

  RampColor colors[kRampSteps + 1];
};

/// What is added to a row's colours before they are cut to bytes, 256 = 1: a byte's exact colours stay so.
struct RampRounding {
  static constexpr RampRounding nearest() {
    RampRounding rounding;
    for (uint16_t &term : rounding.terms)
      term = 128;
    return rounding;
  }
  /// For the row that begins at the frame's pixel (x, y).
  static constexpr RampRounding dithered(int x, int y) {
    RampRounding rounding;
    for (uint16_t &term : rounding.terms)
      term = static_cast<uint16_t>(4 * ditherPlace(x++, y) + 2);
    return rounding;
  }

  uint16_t terms[kDitherPeriod] = {}; ///< of the row's first columns
};

ZOL_LEVELS_TO(avx2,
              /// The pixels of the ramp's places, 0..kRampSteps.
              void rampRow(const RampColor *ramp, const int32_t *places, const RampRounding &rounding,
                           _color_t *out, int count);)

} // namespace zol
