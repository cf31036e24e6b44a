#include "kernels/compositing/lay_color.h"

#include "kernels/compositing/over_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

void lay(_color_t *pixels, int count, U32xN upper, U32xN alphas) {
  if (allSet(alphas == 0))
    return;
  store(pixels, allSet(alphas == 255) ? upper : over(load<U32xN>(pixels, count), upper, upper, alphas),
        count);
}

} // namespace

void layColor(_color_t *pixels, const _color_t *mask, int count, unsigned colour) {
  const auto upper = splat<U32xN>(colour | 0xff000000U);
  forEachVector<U32xN>(count,
                       [=](int i, int n) { lay(pixels + i, n, upper, load<U32xN>(mask + i, n) >> 24); });
}

void layColorOnBytes(_color_t *pixels, const uint8_t *mask, int count, unsigned colour) {
  constexpr int kPixels = kLanes<U32xN>;
  const auto upper = splat<U32xN>(colour | 0xff000000U);
  const auto opacity = static_cast<uint16_t>(colour >> 24);
  forEachVector<U8xN>(count, [=](int i, int n) {
    if (allSet(load<U8xN>(mask + i, n) == 0))
      return;
    for (int x = i; x < i + n; x += kPixels) {
      const int lanes = i + n - x < kPixels ? i + n - x : kPixels;
      const auto bytes = convert<U32xN>(load<Vector<uint8_t, kPixels>>(mask + x, lanes));
      lay(pixels + x, lanes, upper, as<U32xN>(div255(as<U16xN>(bytes) * opacity + 127)) & 0xFF);
    }
  });
}

} // namespace zol::ZOL_LEVEL
