#include "kernels/crossing_search.h"

#include <immintrin.h>

namespace zol::ZOL_LEVEL {
namespace {

#ifdef __AVX2__
constexpr int kBytes = 32;
#else
constexpr int kBytes = 16;
#endif

using Reals = double __attribute__((vector_size(kBytes), may_alias));
using Mask = long long __attribute__((vector_size(kBytes)));

constexpr int kWidth = kBytes / 8;
constexpr int kVectors = 4; // that hide each other's latency

#ifdef __AVX2__
bool any(Mask mask) { return _mm256_movemask_pd(reinterpret_cast<__m256d>(mask)) != 0; }
#else
bool any(Mask mask) { return _mm_movemask_pd(reinterpret_cast<__m128d>(mask)) != 0; }
#endif

Reals load(const double *lanes) { return *reinterpret_cast<const Reals *>(lanes); }

Reals select(Mask mask, Reals yes, Reals no) {
  return reinterpret_cast<Reals>((mask & reinterpret_cast<Mask>(yes)) | (~mask & reinterpret_cast<Mask>(no)));
}

Reals absolute(Reals value) {
  return reinterpret_cast<Reals>(reinterpret_cast<Mask>(value) & (Mask{} + 0x7fffffffffffffffLL));
}

/// The searches of kVectors vectors from lane `first` on: the final midpoints.
void bisect(const CrossingSearch &search, int first, Reals *middle) {
  constexpr double kNear = 1e-4;   // pixels
  constexpr double kNarrow = 1e-6; // of the parameter
  Reals low[kVectors], high[kVectors];
  Mask active[kVectors];
  Mask anyActive{};
  for (int v = 0; v < kVectors; ++v) {
    const int lane = first + v * kWidth;
    low[v] = load(search.low + lane);
    high[v] = load(search.high + lane);
    middle[v] = (low[v] + high[v]) * 0.5;
    active[v] = high[v] - low[v] >= kNarrow;
    anyActive |= active[v];
  }
  while (any(anyActive)) {
    anyActive = Mask{};
#pragma GCC unroll 4
    for (int v = 0; v < kVectors; ++v) {
      const int lane = first + v * kWidth;
      const Reals t = middle[v];
      const Reals error =
          ((load(search.a + lane) * t + load(search.b + lane)) * t + load(search.c + lane)) * t +
          load(search.d + lane) - load(search.line + lane);
      // An error that is not a number narrows neither side and ends the search.
      high[v] = select((error >= 0.0) & active[v], t, high[v]);
      low[v] = select((error < 0.0) & active[v], t, low[v]);
      middle[v] = (low[v] + high[v]) * 0.5;
      active[v] &= (absolute(error) > kNear) & (high[v] - low[v] >= kNarrow);
      anyActive |= active[v];
    }
  }
}

Reals otherCoordinate(const CrossingSearch &search, int lane, Reals t) {
  const Reals t2 = t * t;
  const Reals t3 = t2 * t;
  const Reals h00 = 2.0 * t3 - 3.0 * t2 + 1.0;
  const Reals h01 = -2.0 * t3 + 3.0 * t2;
  const Reals h10 = t3 - 2.0 * t2 + t;
  const Reals h11 = t3 - t2;
  return h00 * load(search.q0 + lane) + h01 * load(search.q1 + lane) + h10 * load(search.t0 + lane) +
         h11 * load(search.t1 + lane);
}

} // namespace

void searchCrossings(const CrossingSearch *search, double *crossings) {
  for (int first = 0; first < kSearchLanes; first += kVectors * kWidth) {
    Reals t[kVectors];
    bisect(*search, first, t);
    for (int v = 0; v < kVectors; ++v) {
      const int lane = first + v * kWidth;
      const Reals crossing = otherCoordinate(*search, lane, t[v]);
      for (int i = 0; i < kWidth; ++i)
        crossings[lane + i] = crossing[i];
    }
  }
}

} // namespace zol::ZOL_LEVEL
