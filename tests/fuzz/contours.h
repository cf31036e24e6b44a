// What holds for every geometry, however it was read.
#pragma once

#include "host/geometry/geometry.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace zol::host::fuzz {

inline void require(bool holds) {
  if (!holds)
    std::abort();
}

inline bool isSame(const double *a, const double *b) { return a[0] == b[0] && a[1] == b[1]; }

/// Finite segments that join, closed contours that end where they begin.
inline void check(const Geometry &geometry) {
  for (const Contour &contour : geometry.contours) {
    require(!contour.segments.empty());
    const double *at = contour.segments[0].P0;
    for (const Segment &segment : contour.segments) {
      for (const double *vector : {segment.P0, segment.P1, segment.H0, segment.H1})
        require(std::isfinite(vector[0]) && std::isfinite(vector[1]));
      require(isSame(segment.P0, at));
      at = segment.P1;
    }
    require(!contour.closed || !contour.closingLine());
  }
}

} // namespace zol::host::fuzz
