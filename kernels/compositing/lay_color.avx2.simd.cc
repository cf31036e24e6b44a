#include "kernels/compositing/lay_color.h"

#include "kernels/compositing/over_lanes.h"

namespace zol::ZOL_LEVEL {

void layColor(_color_t *pixels, const _color_t *mask, int count, unsigned colour) {
  const auto upper = splat<U32xN>(colour | 0xff000000U);
  forEachVector<U32xN>(count, [=](int i, int n) {
    const U32xN alphas = load<U32xN>(mask + i, n) >> 24;
    if (allSet(alphas == 0))
      return;
    store(pixels + i, allSet(alphas == 255) ? upper : over(load<U32xN>(pixels + i, n), upper, upper, alphas),
          n);
  });
}

} // namespace zol::ZOL_LEVEL
