// Bars, steps and ramps: bands of patches side by side.
#pragma once

#include "frame/zol.h"

#include <cstdint>

namespace zol {

/// The bytes of 0 and of 100 percent.
struct Levels {
  int black, white;

  /// The nearest byte.
  [[nodiscard]] uint8_t of(int percent) const;
};
inline constexpr Levels kFullRange{0, 255}, kStudioRange{16, 235};

enum class Bars { smpteHd, ebu, full, ramp, steps };
inline constexpr int kMostBands = 4;

/// Which band row y lies in, from the top; borders are at the nearest row.
int bandOf(Bars bars, int y, int height);

/// A row of a band, opaque; patches meet at the nearest columns.
void drawBand(Bars bars, int band, const Levels &levels, _color_t *row, int width);

} // namespace zol
