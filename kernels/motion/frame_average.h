// Averages of frames, as a shutter takes them in: weights are of 256 = 1.0 and sum up to that.
#pragma once

#include "kernels/color/wide.h"
#include "kernels/simd/levels.h"

namespace zol {

// averageRows    the rows' average, weighted by alpha: with A the sum of the weights times alpha, alpha
//                (A + 128) >> 8 and colours (the sum of the weights times alpha times colour + A / 2) / A.
//                Where alpha is 0 the colours are those of the first row.
// premultiply    colours (c a + 127) / 255; may be done in place.
// addWeighted    a premultiplied row, channel by channel, to `sums`.
// averageOfSums  with A and C a pixel's sums: alpha (A + 128) >> 8, colours (255 C + A / 2) / A, limited to
//                255. Where alpha is 0 the colours are those of `hidden`.
ZOL_LEVELS_TO(avx2, void averageRows(const _color_t *const *rows, const uint16_t *weights, int rowCount,
                                     _color_t *out, int width);
              void premultiply(const _color_t *pixels, _color_t *out, int width);
              void addWeighted(const _color_t *row, uint16_t weight, WidePixel *sums, int width);
              void averageOfSums(const WidePixel *sums, const _color_t *hidden, _color_t *out, int width);)

} // namespace zol
