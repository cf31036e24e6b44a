#include "kernels/compositing/fragment_rows.h"

#include "kernels/compositing/over_lanes.h"

namespace zol::ZOL_LEVEL {

void takeAway(const _color_t *pixels, const uint16_t *gone, _color_t *out, int count) {
  using Parts = Vector<uint16_t, kLanes<U32xN>>;
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto p = load<U32xN>(pixels + i, n);
    const auto parts = min(convert<I32xN>(load<Parts>(gone + i, n)), splat<I32xN>(256));
    const I32xN rest = 256 - parts;
    const U32xN alpha = (as<U32xN>(mulAddPairs(as<I16xN>(p >> 24), as<I16xN>(rest))) + 128) >> 8;
    const U32xN kept = alpha > 0 ? (p & 0x00FFFFFF) | alpha << 24 : U32xN{};
    store(out + i, parts == 0 ? p : kept, n);
  });
}

void gatherPixels(_color_t *layer, const _color_t *piece, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto u = load<U32xN>(piece + i, n);
    if (n == kLanes<U32xN> && allSet(u >= 0xFF000000)) {
      store(layer + i, u);
      return;
    }
    const auto l = load<U32xN>(layer + i, n);
    const auto m = as<I32xN>(u >> 24), k = min(as<I32xN>(l >> 24), 255 - m);
    const F32xN own = convert<F32xN>(m), kept = convert<F32xN>(k);
    const F32xN total = max(own + kept, splat<F32xN>(1));
    U32xN result = as<U32xN>(m + k) << 24;
    for (int shift = 0; shift < 24; shift += 8) { // sums below 2^16: quotients are exact
      const F32xN sum = own * floatChannel(u, shift) + kept * floatChannel(l, shift);
      result |= as<U32xN>(convert<I32xN>(sum / total)) << shift;
    }
    store(layer + i, m == 0 ? l : result, n);
  });
}

} // namespace zol::ZOL_LEVEL
