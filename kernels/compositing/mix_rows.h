// The pixel work of a mix, for ratios within 0 to 1.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstddef>
#include <cstdint>

namespace zol {

/// 1.0 among the weights of a mix.
inline constexpr int kMixOne = 4096;

/// The most rows that one call mixes.
inline constexpr int kMixRows = 4;

/// Columns of neighbouring rows that are mixed alike. Steps, in pixels, lead from a row to the next.
struct MixStretch {
  _color_t *out;
  ptrdiff_t outStep;
  const _color_t *a; ///< may be `out`
  ptrdiff_t aStep;
  const _color_t *b; ///< null where B does not reach
  ptrdiff_t bStep;
  int width;
};

/// What the pixels so far of each row left over, channel by channel: 16 times the remainder, and the top
/// bit turned.
struct MixRemainders {
  static constexpr uint16_t kNone = 0x8000;
  uint16_t lanes[kMixRows * 4];
};

ZOL_LEVELS_TO(
    avx2,
    /// Mixes 1 to kMixRows rows: out = (a * (4096 - weightB) + b * weightB + remainder) / 4096 in every
    /// channel, what the division leaves going on to the next pixel of the row. weightB is within 0 to
    /// 4096, so that the quotient is a byte and the remainder below 4096.
    void mixRows(const MixStretch &stretch, int rows, int weightB, MixRemainders &remainders);

    /// out = (a * (4096 - weightB) + b * weightB) / 4096 in every channel of one row; weightB as above.
    void blendRow(const _color_t *a, const _color_t *b, _color_t *out, int width, int weightB);)

} // namespace zol
