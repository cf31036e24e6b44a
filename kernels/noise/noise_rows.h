// Rows of gradient noise: what a lattice of directions gives between its points. 4096 = 1.0 throughout.
#pragma once

#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

enum class NoiseKind { plain, billows, ridges };

/// 10 t^3 - 15 t^4 + 6 t^5 of 0..4095, which stays below 4096.
constexpr int noiseFade(int t) {
  const auto f = static_cast<int64_t>(t);
  return static_cast<int>(f * f * f * (f * (6 * f - 61440) + 167772160) >> 48);
}

/// Elements behind a row's last that rows of noise may read or write.
inline constexpr int kNoisePadding = 32;

/// The columns of a row. Cells lie between neighbouring points of the lattice.
struct NoiseColumns {
  const int16_t *shares; ///< how far each is from its cell's left point to the right one, times 4
  const int16_t *fades;  ///< the fades of these shares, times 8
  const int32_t *cells;  ///< where each cell begins, and where the last one ends
  int cellCount;
};

/// The lattice's points above or below a row, one more than there are cells.
struct NoisePoints {
  const int16_t *slopes; ///< by columns, times 4
  const int16_t *values; ///< what a point gives in its own column
};

// noiseRow   one octave. With n its noise, billows are 2 |n| - 2048, ridges 2048 - 2 |n|. `fade` is that of
//            the way from the points above to those below.
// blendRows  the weighted sum of an even number of such rows, weights 4096 = 1.0: with v that sum, rounded
//            down and within +-4096, 2048 + ((v + bias) gain >> 12) within 0..4096. Gain up to 32768.
ZOL_LEVELS_TO(avx2, void noiseRow(const NoiseColumns &columns, const NoisePoints &above,
                                  const NoisePoints &below, int fade, NoiseKind kind, int16_t *noise);
              void blendRows(const int16_t *const *rows, const int16_t *weights, int rowCount, int bias,
                             int gain, int32_t *out, int count);)

} // namespace zol
