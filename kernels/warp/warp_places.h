// The resampler for pixels that have each a place of their own.
#pragma once

#include "kernels/warp/place_rows.h"
#include "kernels/warp/taps.h"
#include "kernels/warp/warp_source.h"

namespace zol {

/// Writes pixels that lie at the places, `above` and `below` being two rows of places of which one is theirs:
/// their footprints are what lies to the next place and between those rows. A pixel of alpha 0 is 0.
void warpPlaces(const WarpSource &source, const Places &places, const Places &above, const Places &below,
                WarpFilter filter, _color_t *out, int count);

} // namespace zol
