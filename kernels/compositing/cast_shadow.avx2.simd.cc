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
  constexpr int kTogether = kLanes<U16xN>;
  const auto weight = splat<U16xN>(static_cast<uint16_t>(16 * opacity)); // 0 for all of it
  const auto colors = splat<U32xN>(__builtin_bit_cast(uint32_t, color) & 0x00FFFFFF);
  const auto cast = [=](U16xN bytes, const _color_t *under, _color_t *to) {
    const auto four = [=](int first, U32xN alphas) { // of every eight pixels
      const void *from[kBlocks];
      void *into[kBlocks];
      for (int block = 0; block < kBlocks; ++block) {
        from[block] = under + 8 * block + first;
        into[block] = to + 8 * block + first;
      }
      storeBlocks(into, alphas == 0 ? loadBlocks<U32xN>(from) & 0x00FFFFFF : colors | alphas << 24);
    };
    four(0, widenLow(bytes));
    four(4, widenHigh(bytes));
  };
  forEachVector<U16xN>(count, [=, &rounding](int i, int n) {
    const auto v = load<U16xN>(alpha + i, n);
    const U16xN seen = opacity < 4096 ? mulHigh(v, weight) : v;
    const U16xN bytes = div255(seen + termsAt<U16xN>(rounding, i));
    if (n == kTogether) {
      cast(bytes, hidden + i, out + i);
      return;
    }
    _color_t rest[kTogether] = {};
    const size_t size = static_cast<size_t>(n) * sizeof(_color_t);
    __builtin_memcpy(rest, hidden + i, size);
    cast(bytes, rest, rest);
    __builtin_memcpy(out + i, rest, size);
  });
}

} // namespace zol::ZOL_LEVEL
