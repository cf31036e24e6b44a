// The passes of the blue and green screen over one row.
#pragma once

#include "frame/zol.h"
#include "kernels/keying/weight_and_alpha.h"
#include "kernels/simd/levels.h"

namespace zol {

enum class KeyChannel { blue, green };

/// The number of differences between the key channel and the larger of the other two, -255 to 255; tables
/// over them begin at -255.
constexpr int kDifferences = 511;

// matteRow    writes byDifference's alpha of the difference in `source` into out's.
// composeRow  lays `key` on `out` by byMatte's weight and alpha of the matte in its alpha, the key channel
//             held down to the larger of the other two.
// keyRow      both at once: lays `key` on `out` by those of the difference in `source`.
ZOL_LEVELS_TO(avx2, void matteRow(KeyChannel channel, const _color_t *source, _color_t *out, int width,
                                  const WeightAndAlpha *byDifference);
              void composeRow(KeyChannel channel, const _color_t *key, _color_t *out, int width,
                              const WeightAndAlpha *byMatte);
              void keyRow(KeyChannel channel, const _color_t *source, const _color_t *key, _color_t *out,
                          int width, const WeightAndAlpha *byDifference);)

} // namespace zol
