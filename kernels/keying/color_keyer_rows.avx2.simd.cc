#include "kernels/keying/color_keyer_rows.h"

#include "kernels/keying/composite_pixels.h"

namespace zol::ZOL_LEVEL {
namespace {

/// |red - red| + |green - green| + |blue - blue|, 0 to 765.
U32xN distanceSums(U32xN pixels, U8xN color) {
  const auto distances = as<U32xN>(absoluteDifference(as<U8xN>(pixels), color));
  return (distances & 0xFF) + (distances >> 8 & 0xFF) + (distances >> 16 & 0xFF);
}

} // namespace

void colorKeyRow(const _color_t *foreground, const _color_t *background, _color_t *out, int width,
                 _color_t color, const WeightAndAlpha *byDistanceSum) {
  const auto key = as<U8xN>(splat<U32xN>(__builtin_bit_cast(uint32_t, color)));
  forEachVector<U32xN>(width, [=](int i, int n) {
    const auto upper = load<U32xN>(foreground + i, n);
    const U32xN entries = gather(byDistanceSum, distanceSums(upper, key));
    store(out + i, composite(load<U32xN>(background + i, n), upper & 0x00FFFFFF, entries), n);
  });
}

void underlayRow(const _color_t *background, _color_t *out, int width) {
  forEachVector<U32xN>(width,
                       [=](int i, int n) { store(out + i, load<U32xN>(background + i, n) & 0x00FFFFFF, n); });
}

} // namespace zol::ZOL_LEVEL
