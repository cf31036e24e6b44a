#include "kernels/compositing/lay_color.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// A channel of every pixel, from bit `shift` on.
F32xN channel(U32xN pixels, int shift) { return convert<F32xN>(as<I32xN>(pixels >> shift & 0xFF)); }
U32xN truncated(F32xN v) { return as<U32xN>(convert<I32xN>(v)); }

/// Floats are exact here: every sum is an integer below 2^24, and a quotient below 256 of such numbers, if
/// it is not whole, is further from the next integer than rounding can take it.
U32xN over(U32xN pixels, F32xN m, uint32_t colour) {
  const F32xN colourWeight = m * 255.0F;
  const F32xN pixelWeight = channel(pixels, 24) * (255.0F - m);
  const F32xN total = colourWeight + pixelWeight;
  const auto none = m == 0.0F;
  const F32xN divisor = none ? splat<F32xN>(1) : total;
  U32xN result = truncated(total / 255.0F) << 24;
  for (int shift = 0; shift < 24; shift += 8) {
    const auto value = static_cast<float>(colour >> shift & 255);
    result |= truncated((colourWeight * value + pixelWeight * channel(pixels, shift)) / divisor) << shift;
  }
  return none ? pixels : result;
}

} // namespace

void layColor(_color_t *pixels, const _color_t *mask, int count, unsigned colour) {
  const uint32_t opaque = colour | 0xff000000U;
  forEachVector<U32xN>(count, [=](int i, int n) {
    const U32xN alphas = load<U32xN>(mask + i, n) >> 24;
    if (allSet(alphas == 0))
      return;
    store(pixels + i,
          allSet(alphas == 255) ? splat<U32xN>(opaque)
                                : over(load<U32xN>(pixels + i, n), channel(alphas, 0), opaque),
          n);
  });
}

} // namespace zol::ZOL_LEVEL
