// Averages of samples of a picture, row by row.
#pragma once

#include "kernels/color/wide.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// A picture of wide values whose top bits are turned: as signed numbers, which they are less 32768, the
/// processor multiplies them by weights. It has one column and one row beyond, which are read and do not
/// count.
struct PathPicture {
  const WidePixel *pixels;
  int width, height;

  [[nodiscard]] int step() const { return width + 1; }
};

/// Where pixels are taken from: centre + matrix (pixel - centre) + shift.
struct PathPlace {
  int64_t xx, xy, yx, yy; ///< 2^24 = 1.0; of less than 32.0
  int shiftX, shiftY;     ///< sixteenths of a pixel
};

inline constexpr int kMostPathPlaces = 12;

/// The places that are averaged.
struct PathPlaces {
  int count;
  PathPlace places[kMostPathPlaces];
  int centreX, centreY; ///< sixteenths of a pixel
};

/// Two rows of pixels and their parts in an average, 256 for every place in all.
struct PathTaps {
  const WidePixel *first, *second;
  uint32_t weights; ///< the second one's in the upper half
};

// averagePlaces  pixels `from` to `to` of row y: (the sum of the places' bilinear sums at sixteenths of a
//                pixel + 128 count) / (256 count). Outside the picture its edge pixels repeat.
// averageTaps    the same of rows, whose weights sum up to 256 count: of `width` pixels.
ZOL_LEVELS_TO(avx2, void averagePlaces(const PathPicture &picture, const PathPlaces &places, int y, int from,
                                       int to, WidePixel *out);
              void averageTaps(const PathTaps *taps, int pairs, int count, WidePixel *out, int width);)

} // namespace zol
