// The passes of the blue and green screen over one row.
#pragma once

#include "frame/zol.h"
#include "kernels/keying/laying.h"
#include "kernels/simd/levels.h"

namespace zol {

enum class KeyChannel { blue, green };

/// The number of differences between the key channel and the larger of the other two, -255 to 255; tables
/// over them begin at -255.
constexpr int kDifferences = 511;

// matteRow    writes the alpha of byDifference's layings, by the difference in `source`, into out's.
// composeRow  lays `key` on `out` by the layings of the matte in its alpha, the key channel held down to the
// larger of
//             the other two.
// keyRow      both at once: lays `key` on `out` by the layings of the difference in `source`.
ZOL_LEVELS(void matteRow(KeyChannel channel, const _color_t *source, _color_t *out, int width,
                         const Laying *byDifference);
           void composeRow(KeyChannel channel, const _color_t *key, _color_t *out, int width,
                           const Laying *byMatte);
           void keyRow(KeyChannel channel, const _color_t *source, const _color_t *key, _color_t *out,
                       int width, const Laying *byDifference);)

} // namespace zol
