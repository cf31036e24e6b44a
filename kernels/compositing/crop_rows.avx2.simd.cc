#include "kernels/compositing/coverage_lanes.h"
#include "kernels/compositing/crop_mask.h"

namespace zol::ZOL_LEVEL {

void scaleCoverage(const uint16_t *coverage, int by, uint16_t *out, int count) {
  const auto times = static_cast<uint16_t>(by);
  forEachVector<U16xN>(count, [=](int i, int n) {
    const auto c = load<U16xN>(coverage + i, n);
    store(out + i, by == 256 ? c : (c * times + 128) >> 8, n); // up to 255 * 256 + 128
  });
}

void roundCoverage(const RoundCorner &corner, uint16_t *coverage, int count) {
  const F32xN steps = laneNumbers();
  forEachVector<F32xN>(count, [=](int i, int n) {
    const F32xN across = corner.start + corner.perColumn * (static_cast<float>(i) + steps);
    const F32xN squareAcross = across * across, square = squareAcross + corner.down * corner.down;
    const F32xN whole = max(square, splat<F32xN>(1e-6F)), x = squareAcross / whole, y = 1.0F - x;
    const F32xN pixel = corner.perColumn * x + y;
    const F32xN faded = pixel + (corner.fadeAcross * x + corner.fadeDown * y);
    const F32xN width = max(pixel, min(faded, splat<F32xN>(2 * corner.radius)));
    const F32xN inside = 256.0F * (corner.radius - squareRoot(square)) + 128.0F * pixel;
    const I32xN t = coverageOf(inside / width + 0.5F);
    const I32xN c = select(as<I32xN>(width > pixel), t * t * (768 - 2 * t) >> 16, t);
    store(coverage + i, convert<Coverages>(min(c, convert<I32xN>(load<Coverages>(coverage + i, n)))), n);
  });
}

void matteCoverage(const uint8_t *matte, uint16_t *coverage, int count) {
  using Bytes = Vector<uint8_t, kLanes<U16xN>>;
  forEachVector<U16xN>(count, [=](int i, int n) {
    const auto m = convert<U16xN>(load<Bytes>(matte + i, n)), c = load<U16xN>(coverage + i, n);
    store(coverage + i, div255(c * m + 127), n); // up to 256 * 255 + 127
  });
}

void invertCoverage(uint16_t *coverage, int count) {
  forEachVector<U16xN>(count,
                       [=](int i, int n) { store(coverage + i, 256 - load<U16xN>(coverage + i, n), n); });
}

void keepPixels(const _color_t *pixels, const uint16_t *coverage, _color_t *out, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto p = load<U32xN>(pixels + i, n);
    const U32xN alpha = covered(p, coverage + i, n);
    store(out + i, alpha == 0 ? U32xN{} : (p & 0x00FFFFFF) | alpha << 24, n);
  });
}

} // namespace zol::ZOL_LEVEL
