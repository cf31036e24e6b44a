// The resampler's work on pixels.
#pragma once

#include "kernels/simd/levels.h"
#include "kernels/warp/taps.h"
#include "kernels/warp/warp_map.h"
#include "kernels/warp/warp_source.h"

namespace zol {

/// The pixels that probe() takes at most at a time.
inline constexpr int kMostProbed = 64;

// findPlaces   where pixels x and on of row y are in the source: of its pixels' centres, in 1/256 pixel.
// probe        what the probes of a footprint find around each place, `taps` being those of its radius.
// copyOpaque   pixels as they are, their alphas 255.
// copyVisible  pixels as they are, 0 where alpha is 0.
// fade         alpha (a opacity + 2048) >> 12; where it is 0 the pixel is 0.
ZOL_LEVELS(void findPlaces(const WarpMap &map, int y, int x, int count, int *u, int *v);
           void probe(const WarpSource &source, const Footprint &footprint, const Taps *taps, const int *u,
                      const int *v, int count, _color_t *out);
           void copyOpaque(const _color_t *pixels, int count, _color_t *out);
           void copyVisible(const _color_t *pixels, int count, _color_t *out);
           void fade(_color_t *pixels, int count, int opacity);)

/// The place of a pixel within a source, whatever its place outside.
int heldWithin(int place, int size, WarpBeyond beyond);

/// The pixel at a place of whole pixels, as it is.
_color_t pixelOf(const WarpSource &source, int x, int y);

} // namespace zol
