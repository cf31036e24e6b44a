#include "kernels/shape/crossing_search.h"

#include "kernels/shape/hermite.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kWidth = kLanes<F64xN>;
constexpr int kVectors = kSearchLanes / kWidth < 4 ? kSearchLanes / kWidth : 4; // hide each other's latency

/// The searches of kVectors vectors from lane `first` on: the final midpoints.
void bisect(const CrossingSearch &search, int first, F64xN *middle) {
  constexpr double kNear = 1e-4;   // pixels
  constexpr double kNarrow = 1e-6; // of the parameter
  F64xN low[kVectors], high[kVectors];
  I64xN moving[kVectors]; // a mask: the other lanes stand still
  I64xN anyMoving{};
  for (int v = 0; v < kVectors; ++v) {
    const int lane = first + v * kWidth;
    low[v] = load<F64xN>(search.low + lane);
    high[v] = load<F64xN>(search.high + lane);
    middle[v] = (low[v] + high[v]) * 0.5;
    moving[v] = high[v] - low[v] >= kNarrow;
    anyMoving |= moving[v];
  }
  while (anySet(anyMoving)) {
    anyMoving = I64xN{};
#pragma GCC unroll 4
    for (int v = 0; v < kVectors; ++v) {
      const int lane = first + v * kWidth;
      const F64xN t = middle[v];
      const F64xN error = ((load<F64xN>(search.a + lane) * t + load<F64xN>(search.b + lane)) * t +
                           load<F64xN>(search.c + lane)) *
                              t +
                          load<F64xN>(search.d + lane) - load<F64xN>(search.line + lane);
      // An error that is not a number narrows neither side and ends the search.
      high[v] = select((error >= 0.0) & moving[v], t, high[v]);
      low[v] = select((error < 0.0) & moving[v], t, low[v]);
      middle[v] = (low[v] + high[v]) * 0.5;
      moving[v] &= (absolute(error) > kNear) & (high[v] - low[v] >= kNarrow);
      anyMoving |= moving[v];
    }
  }
}

F64xN otherCoordinate(const CrossingSearch &search, int lane, F64xN t) {
  return hermite(t, load<F64xN>(search.q0 + lane), load<F64xN>(search.q1 + lane),
                 load<F64xN>(search.t0 + lane), load<F64xN>(search.t1 + lane));
}

} // namespace

void searchCrossings(const CrossingSearch *search, double *crossings) {
  for (int first = 0; first < kSearchLanes; first += kVectors * kWidth) {
    F64xN t[kVectors];
    bisect(*search, first, t);
    for (int v = 0; v < kVectors; ++v) {
      const int lane = first + v * kWidth;
      store(crossings + lane, otherCoordinate(*search, lane, t[v]));
    }
  }
}

} // namespace zol::ZOL_LEVEL
