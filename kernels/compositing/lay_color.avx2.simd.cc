#include "kernels/compositing/lay_color.h"

#include "kernels/compositing/over_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Inlined, so that whole vectors are stored as such.
[[gnu::always_inline]] inline void lay(_color_t *pixels, int count, U32xN upper, U32xN alphas) {
  if (allSet(alphas == 0))
    return;
  if (allSet(alphas == 255)) {
    store(pixels, upper, count);
    return;
  }
  const auto lower = load<U32xN>(pixels, count);
  store(pixels,
        allSet(lower >> 24 == 255) ? overOpaque(lower, upper, alphas) : over(lower, upper, upper, alphas),
        count);
}

} // namespace

void layColor(_color_t *pixels, const _color_t *mask, int count, unsigned colour) {
  const auto upper = splat<U32xN>(colour | 0xff000000U);
  forEachVector<U32xN>(
      count, [=](int i, int n) __attribute__((always_inline)) {
        lay(pixels + i, n, upper, load<U32xN>(mask + i, n) >> 24);
      });
}

void layColorOnBytes(_color_t *pixels, const uint8_t *mask, int count, unsigned colour) {
  const auto upper = splat<U32xN>(colour | 0xff000000U);
  const auto opacity = static_cast<uint16_t>(colour >> 24);
  forEachVector<U8xN>(count, [=](int first, int some) {
    if (allSet(load<U8xN>(mask + first, some) == 0))
      return;
    forEachVector<U32xN>(
        some, [=](int i, int n) __attribute__((always_inline)) {
          const auto bytes = convert<U32xN>(load<Vector<uint8_t, kPixels>>(mask + first + i, n));
          lay(pixels + first + i, n, upper, as<U32xN>(div255(as<U16xN>(bytes) * opacity + 127)) & 0xFF);
        });
  });
}

} // namespace zol::ZOL_LEVEL
