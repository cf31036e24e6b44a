#include "kernels/compositing/mix_by_mask.h"

#include "kernels/compositing/over_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Floats are exact: sums are integers below 2^24, and quotients below 256 of such numbers, if they are not
/// whole, are further from the next integer than rounding can take them.
U32xN mixed(U32xN first, U32xN second, U32xN m) {
  const F32xN mask = floatChannel(m, 0);
  const F32xN w = mask * floatChannel(second, 24), v = (255.0F - mask) * floatChannel(first, 24);
  const F32xN total = w + v, divisor = max(total, splat<F32xN>(1));
  U32xN result = as<U32xN>(convert<I32xN>(total / 255.0F)) << 24;
  for (int shift = 0; shift < 24; shift += 8) {
    const F32xN sum = w * floatChannel(second, shift) + v * floatChannel(first, shift);
    result |= as<U32xN>(convert<I32xN>(sum / divisor)) << shift;
  }
  return result;
}

/// What is left of pixels that are not mixed.
U32xN whole(U32xN pixels) { return pixels >> 24 == 0 ? U32xN{} : pixels; }

} // namespace

void mixByMask(const _color_t *first, const _color_t *second, const uint8_t *mask, _color_t *out, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto a = load<U32xN>(first + i, n), b = load<U32xN>(second + i, n);
    const auto m = convert<U32xN>(load<Vector<uint8_t, kLanes<U32xN>>>(mask + i, n));
    U32xN result;
    if (allSet(m == 0))
      result = whole(a);
    else if (allSet(m == 255))
      result = whole(b);
    else if (allSet((a & b) >> 24 == 255))
      result = overOpaque(a, b, m);
    else
      result = mixed(a, b, m);
    store(out + i, result, n);
  });
}

} // namespace zol::ZOL_LEVEL
