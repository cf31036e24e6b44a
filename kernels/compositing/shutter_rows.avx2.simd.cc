#include "kernels/compositing/coverage_lanes.h"
#include "kernels/compositing/over_lanes.h"
#include "kernels/compositing/shutter.h"
#include "kernels/simd/divide.h"

namespace zol::ZOL_LEVEL {

void layCovered(_color_t *lower, const _color_t *upper, const uint16_t *coverage, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto u = load<U32xN>(upper + i, n);
    const U32xN m = covered(u, coverage + i, n);
    if (allSet(m == 0))
      return;
    if (allSet(m == 255)) {
      store(lower + i, u, n);
      return;
    }
    const auto l = load<U32xN>(lower + i, n);
    store(lower + i, allSet(l >= 0xFF000000) ? overOpaque(l, u, m) : over(l, u, u, m), n);
  });
}

void coverAlpha(_color_t *pixels, const uint16_t *coverage, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto p = load<U32xN>(pixels + i, n);
    store(pixels + i, (p & 0x00FFFFFF) | covered(p, coverage + i, n) << 24, n);
  });
}

void borderRow(const uint16_t *inner, const uint16_t *outer, uint16_t *border, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto in = convert<U32xN>(load<Coverages>(inner + i, n)),
               out = convert<U32xN>(load<Coverages>(outer + i, n));
    const auto beyond = as<U32xN>(max(as<I32xN>(out - in), I32xN{})) << 8;
    const auto rest = as<U32xN>(max(as<I32xN>(256 - in), splat<I32xN>(1)));
    store(border + i, convert<Coverages>(quotient(beyond, reciprocal(rest))), n);
  });
}

} // namespace zol::ZOL_LEVEL
