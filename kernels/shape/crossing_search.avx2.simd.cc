#include "kernels/shape/crossing_search.h"

#include "kernels/shape/hermite.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kWidth = kLanes<F64xN>;
constexpr int kVectors = 4; // that hide each other's latency

/// Combined as bytes: without compares of 64-bit integers GCC takes 64-bit masks apart at sse2.
U8xN mask(I64xN comparison) { return as<U8xN>(comparison); }

/// The searches of kVectors vectors from lane `first` on: the final midpoints.
void bisect(const CrossingSearch &search, int first, F64xN *middle) {
  constexpr double kNear = 1e-4;   // pixels
  constexpr double kNarrow = 1e-6; // of the parameter
  F64xN low[kVectors], high[kVectors];
  U8xN done[kVectors]; // a mask of the lanes that stand still
  U8xN allDone = ~U8xN{};
  for (int v = 0; v < kVectors; ++v) {
    const int lane = first + v * kWidth;
    low[v] = load<F64xN>(search.low + lane);
    high[v] = load<F64xN>(search.high + lane);
    middle[v] = (low[v] + high[v]) * 0.5;
    done[v] = mask(!(high[v] - low[v] >= kNarrow));
    allDone &= done[v];
  }
  while (!allSet(allDone)) {
    allDone = ~U8xN{};
#pragma GCC unroll 4
    for (int v = 0; v < kVectors; ++v) {
      const int lane = first + v * kWidth;
      const F64xN t = middle[v];
      const F64xN error = ((load<F64xN>(search.a + lane) * t + load<F64xN>(search.b + lane)) * t +
                           load<F64xN>(search.c + lane)) *
                              t +
                          load<F64xN>(search.d + lane) - load<F64xN>(search.line + lane);
      // All bits set is not a number, and of such a one and a bound min and max give the bound. An error that
      // is not a number narrows neither side and ends the search.
      const U8xN moved = done[v] | as<U8xN>(t);
      high[v] = min(as<F64xN>(mask(!(error >= 0.0)) | moved), high[v]);
      low[v] = max(as<F64xN>(mask(!(error < 0.0)) | moved), low[v]);
      middle[v] = (low[v] + high[v]) * 0.5;
      done[v] |= mask(!(absolute(error) > kNear)) | mask(!(high[v] - low[v] >= kNarrow));
      allDone &= done[v];
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
