#include "kernels/compositing/cast_shadow.h"

#include "kernels/color/wide_lanes.h"

namespace zol::ZOL_LEVEL {

void thicken(uint16_t *alpha, int count, int gain) {
  const auto factor = splat<U16xN>(static_cast<uint16_t>(gain));
  forEachVector<U16xN>(count, [=](int i, int n) {
    const auto v = load<U16xN>(alpha + i, n);
    const U16xN high = mulHigh(v, factor);
    const U16xN product = (high << 4) | (v * factor >> 12);
    const U16xN beyond = subSaturated(product, splat<U16xN>(kWideOne));
    store(alpha + i, high >= 4096 ? splat<U16xN>(kWideOne) : product - beyond, n);
  });
}

void castShadow(const uint16_t *alpha, int opacity, const Rounding &rounding, _color_t color,
                const _color_t *hidden, _color_t *out, int count) {
  constexpr int kPixels = kLanes<U32xN>;
  const auto weight = splat<U16xN>(static_cast<uint16_t>(16 * opacity)); // 0 for all of it
  const auto colors = splat<U32xN>(__builtin_bit_cast(uint32_t, color) & 0x00FFFFFF);
  forEachVector<U16xN>(count, [=, &rounding](int i, int n) {
    const auto v = load<U16xN>(alpha + i, n);
    const U16xN seen = opacity < 4096 ? mulHigh(v, weight) : v;
    const U16xN bytes = div255(seen + termsAt<U16xN>(rounding, i));
    uint16_t inOrder[kLanes<U16xN>];
    store(inOrder, bytes);
    for (int half = 0; half < n; half += kPixels) {
      const int lanes = n - half < kPixels ? n - half : kPixels;
      const auto alphas = convert<U32xN>(load<Vector<uint16_t, kPixels>>(inOrder + half));
      const U32xN under = load<U32xN>(hidden + i + half, lanes) & 0x00FFFFFF;
      store(out + i + half, alphas == 0 ? under : colors | alphas << 24, lanes);
    }
  });
}

} // namespace zol::ZOL_LEVEL
