// The resampler's work on pixels.
#pragma once

#include "kernels/simd/levels.h"
#include "kernels/warp/taps.h"
#include "kernels/warp/warp_map.h"
#include "kernels/warp/warp_source.h"

namespace zol {

/// The pixels that are taken at most at a time. Places have room for so many: they are written and read
/// beyond the count, in whole vectors.
inline constexpr int kMostProbed = 64;

/// From the places of columns to others, in 1/256 pixel.
struct PlaceSteps {
  static constexpr int kLongest = 8 * kPhases;

  int rightU[kMostProbed], rightV[kMostProbed], downU[kMostProbed], downV[kMostProbed];
};

// findPlaces   where pixels x and on of row y are in the source: of its pixels' centres, in 1/256 pixel.
// probe        what the probes of a footprint find around each place. `inRow` says that all places lie in one
//              row, in order, and the first line of probes too.
// probeEach    what one probe finds around each place, of radii that are given for each as well: 1/64 pixel.
// probeSteps   what the probes of a footprint of its own find around the place of each of the columns, up to
//              kMostProbed: the steps are those to the next place and from row to row.
// pickEach     the pixel that is nearest to each place, of any count.
// copyOpaque   pixels as they are, their alphas 255.
// copyVisible  pixels as they are, 0 where alpha is 0.
// fade         alpha (a opacity + 2048) >> 12; where it is 0 the pixel is 0.
ZOL_LEVELS(void findPlaces(const WarpMap &map, int y, int x, int count, int *u, int *v);
           void probe(const WarpSource &source, const Footprint &footprint, WarpFilter filter, bool inRow,
                      const int *u, const int *v, int count, _color_t *out);
           void probeEach(const WarpSource &source, WarpFilter filter, const int *u, const int *v,
                          const int *radiiAcross, const int *radiiDown, int count, _color_t *out);
           void probeSteps(const WarpSource &source, WarpFilter filter, const int *u, const int *v,
                           const PlaceSteps &steps, const int *columns, int count, _color_t *out);
           void pickEach(const WarpSource &source, const int *u, const int *v, int count, _color_t *out);
           void copyOpaque(const _color_t *pixels, int count, _color_t *out);
           void copyVisible(const _color_t *pixels, int count, _color_t *out);
           void fade(_color_t *pixels, int count, int opacity);)

/// The place of a pixel within a source, whatever its place outside.
int heldWithin(int place, int size, WarpBeyond beyond);

/// The pixel at a place of whole pixels, as it is.
_color_t pixelOf(const WarpSource &source, int x, int y);

} // namespace zol
