#include "kernels/shape/crossing_search.h"

#include "kernels/shape/hermite.h"

#include <immintrin.h>

namespace zol::ZOL_LEVEL {
namespace {

#ifdef __AVX2__
using Reals = __m256d;
Reals load(const double *lanes) { return _mm256_load_pd(lanes); }
void store(double *lanes, Reals value) { _mm256_store_pd(lanes, value); }
Reals least(Reals a, Reals b) { return _mm256_min_pd(a, b); }
Reals greatest(Reals a, Reals b) { return _mm256_max_pd(a, b); }
Reals either(Reals a, Reals b) { return _mm256_or_pd(a, b); }
Reals both(Reals a, Reals b) { return _mm256_and_pd(a, b); }
Reals notAtLeast(Reals a, Reals b) { return _mm256_cmp_pd(a, b, _CMP_NGE_UQ); }
Reals notBelow(Reals a, Reals b) { return _mm256_cmp_pd(a, b, _CMP_NLT_UQ); }
Reals notAbove(Reals a, Reals b) { return _mm256_cmp_pd(a, b, _CMP_NGT_UQ); }
Reals absolute(Reals value) { return _mm256_andnot_pd(_mm256_set1_pd(-0.0), value); }
bool allSet(Reals mask) { return _mm256_movemask_pd(mask) == 0xf; }
#else
using Reals = __m128d;
Reals load(const double *lanes) { return _mm_load_pd(lanes); }
void store(double *lanes, Reals value) { _mm_store_pd(lanes, value); }
Reals least(Reals a, Reals b) { return _mm_min_pd(a, b); }
Reals greatest(Reals a, Reals b) { return _mm_max_pd(a, b); }
Reals either(Reals a, Reals b) { return _mm_or_pd(a, b); }
Reals both(Reals a, Reals b) { return _mm_and_pd(a, b); }
Reals notAtLeast(Reals a, Reals b) { return _mm_cmpnge_pd(a, b); }
Reals notBelow(Reals a, Reals b) { return _mm_cmpnlt_pd(a, b); }
Reals notAbove(Reals a, Reals b) { return _mm_cmpngt_pd(a, b); }
Reals absolute(Reals value) { return _mm_andnot_pd(_mm_set1_pd(-0.0), value); }
bool allSet(Reals mask) { return _mm_movemask_pd(mask) == 3; }
#endif

constexpr int kWidth = sizeof(Reals) / sizeof(double);
constexpr int kVectors = 4; // that hide each other's latency

/// The searches of kVectors vectors from lane `first` on: the final midpoints.
void bisect(const CrossingSearch &search, int first, Reals *middle) {
  const Reals near = Reals{} + 1e-4;   // pixels
  const Reals narrow = Reals{} + 1e-6; // of the parameter
  Reals low[kVectors], high[kVectors];
  Reals done[kVectors]; // all bits set in lanes that stand still
  Reals allDone = notBelow(Reals{}, Reals{});
  for (int v = 0; v < kVectors; ++v) {
    const int lane = first + v * kWidth;
    low[v] = load(search.low + lane);
    high[v] = load(search.high + lane);
    middle[v] = (low[v] + high[v]) * 0.5;
    done[v] = notAtLeast(high[v] - low[v], narrow);
    allDone = both(allDone, done[v]);
  }
  while (!allSet(allDone)) {
    allDone = notBelow(Reals{}, Reals{});
#pragma GCC unroll 4
    for (int v = 0; v < kVectors; ++v) {
      const int lane = first + v * kWidth;
      const Reals t = middle[v];
      const Reals error =
          ((load(search.a + lane) * t + load(search.b + lane)) * t + load(search.c + lane)) * t +
          load(search.d + lane) - load(search.line + lane);
      // All bits set is not a number, and of such a one and a bound the operations give the bound. An error
      // that is not a number narrows neither side and ends the search.
      const Reals moving = either(done[v], t);
      high[v] = least(either(notAtLeast(error, Reals{}), moving), high[v]);
      low[v] = greatest(either(notBelow(error, Reals{}), moving), low[v]);
      middle[v] = (low[v] + high[v]) * 0.5;
      done[v] =
          either(done[v], either(notAbove(absolute(error), near), notAtLeast(high[v] - low[v], narrow)));
      allDone = both(allDone, done[v]);
    }
  }
}

Reals otherCoordinate(const CrossingSearch &search, int lane, Reals t) {
  return hermite(t, load(search.q0 + lane), load(search.q1 + lane), load(search.t0 + lane),
                 load(search.t1 + lane));
}

} // namespace

void searchCrossings(const CrossingSearch *search, double *crossings) {
  for (int first = 0; first < kSearchLanes; first += kVectors * kWidth) {
    Reals t[kVectors];
    bisect(*search, first, t);
    for (int v = 0; v < kVectors; ++v) {
      const int lane = first + v * kWidth;
      store(crossings + lane, otherCoordinate(*search, lane, t[v]));
    }
  }
}

} // namespace zol::ZOL_LEVEL
