// The resampler: rows of pixels that are found in a source by a map.
#pragma once

#include "kernels/warp/taps.h"
#include "kernels/warp/warp_map.h"
#include "kernels/warp/warp_source.h"

namespace zol {

/// Writes pixels x0 to x1 of row y of the output to out[0] and on, transparent outside the source's outline.
/// Alphas are multiplied by the opacity, 4096 = 1.0. A pixel of alpha 0 is 0.
void warpRow(const WarpSource &source, const WarpMap &map, int y, int x0, int x1, WarpFilter filter,
             int opacity, _color_t *out);

/// The same as if the source had no outline: what its edges do beyond it shows everywhere.
void warpPixels(const WarpSource &source, const WarpMap &map, int y, int x0, int x1, WarpFilter filter,
                _color_t *out);

} // namespace zol
