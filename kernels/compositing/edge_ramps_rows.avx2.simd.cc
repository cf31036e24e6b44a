#include "kernels/compositing/edge_ramps.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

using Coverages = Vector<uint16_t, kLanes<F32xN>>;

/// Adds value(columns) of every vector of columns.
template <class Value> void addEach(int left, int width, uint16_t *coverage, Value value) {
  F32xN steps;
  for (int i = 0; i < kLanes<F32xN>; ++i)
    steps[i] = static_cast<float>(i);
  forEachVector<F32xN>(width, [=](int i, int n) {
    const auto before = convert<I32xN>(load<Coverages>(coverage + i, n));
    const I32xN sum = before + value(static_cast<float>(left + i) + steps);
    store(coverage + i, convert<Coverages>(min(sum, splat<I32xN>(256))), n);
  });
}

F32xN heightOf(const EdgeRamp &ramp, F32xN columns) { return ramp.start + ramp.slope * columns; }

I32xN coverageOf(F32xN height) {
  return convert<I32xN>(min(max(height, splat<F32xN>(0)), splat<F32xN>(256)));
}

} // namespace

void addRamps(const RampShape &shape, int left, int width, uint16_t *coverage) {
  if (shape.join == RampJoin::least) {
    addEach(left, width, coverage, [=, ramps = shape.ramps](F32xN columns) {
      auto least = splat<F32xN>(shape.most);
      for (int i = 0; i < shape.count; ++i)
        least = min(heightOf(ramps[i], columns), least);
      return coverageOf(least);
    });
    return;
  }
  const EdgeRamp first = shape.ramps[0], second = shape.ramps[1];
  addEach(left, width, coverage, [=, join = shape.join](F32xN columns) {
    const I32xN a = coverageOf(heightOf(first, columns)), b = coverageOf(heightOf(second, columns));
    return join == RampJoin::both       ? max(a + b - 256, I32xN{})
           : join == RampJoin::greatest ? max(a, b)
                                        : a + b;
  });
}

void addRoundRamp(const RoundRamp &round, int left, int width, uint16_t *coverage) {
  addEach(left, width, coverage, [=](F32xN columns) {
    const F32xN across = round.perColumn * columns + round.column;
    return coverageOf(round.start - round.scale * squareRoot(across * across + round.down * round.down));
  });
}

} // namespace zol::ZOL_LEVEL
