// Where cubics cross lines: bisection searches, many side by side.
#pragma once

#include "kernels/simd/levels.h"

namespace zol {

/// Searches that run together, one a lane.
inline constexpr int kSearchLanes = 16;

/// In each lane the parameter within [low, high] is sought at which the increasing cubic with coefficients
/// a, b, c, d reaches `line`; then the other coordinate's value there, from its ends and Hermite tangents.
/// A decreasing cubic is searched with coefficients and line negated, which negates every intermediate.
struct CrossingSearch {
  alignas(32) double a[kSearchLanes], b[kSearchLanes], c[kSearchLanes], d[kSearchLanes];
  double line[kSearchLanes];
  double low[kSearchLanes], high[kSearchLanes];
  double q0[kSearchLanes], q1[kSearchLanes], t0[kSearchLanes], t1[kSearchLanes];
};

/// Writes kSearchLanes crossings. A lane stops once it is within 1e-4 of its line or its interval is
/// narrower than 1e-6, and stands still while others go on.
ZOL_LEVELS_TO(avx2, void searchCrossings(const CrossingSearch *search, double *crossings);)

} // namespace zol
