#include "kernels/sampling/sample.h"

#include "kernels/sampling/sample_lanes.h"

namespace zol::ZOL_LEVEL {

void sampleRow(const uint16_t *top, const uint16_t *bottom, const SampleWeights &weights, uint16_t *out,
               int count) {
  const I16xN above = weightPairs(weights.topLeft, weights.topRight);
  const I16xN below = weightPairs(weights.bottomLeft, weights.bottomRight);
  forEachVector<U16xN>(count, [=](int i, int n) {
    const auto at = [=](const uint16_t *row, int shift) { return centred(load<U16xN>(row + i + shift, n)); };
    const I16xN a = at(top, 0), b = at(top, 1), c = at(bottom, 0), d = at(bottom, 1);
    const auto rounded = [=](I16xN upper, I16xN lower) {
      return (mulAddPairs(upper, above) + mulAddPairs(lower, below) + 128) >> 8;
    };
    const I32xN low = rounded(interleaveLow(a, b), interleaveLow(c, d));
    const I32xN high = rounded(interleaveHigh(a, b), interleaveHigh(c, d));
    store(out + i, as<U16xN>(packI16(low, high)) ^ 0x8000, n);
  });
}

} // namespace zol::ZOL_LEVEL
