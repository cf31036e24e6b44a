#include "kernels/compositing/coverage_lanes.h"
#include "kernels/compositing/edge_ramps.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Adds value(columns) of every vector of columns.
template <class Value> void addEach(int left, int width, uint16_t *coverage, Value value) {
  const F32xN steps = laneNumbers();
  forEachVector<F32xN>(width, [=](int i, int n) {
    const auto before = convert<I32xN>(load<Coverages>(coverage + i, n));
    const I32xN sum = before + value(static_cast<float>(left + i) + steps);
    store(coverage + i, convert<Coverages>(min(sum, splat<I32xN>(256))), n);
  });
}

F32xN heightOf(const EdgeRamp &ramp, F32xN columns) { return ramp.start + ramp.slope * columns; }

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

void addWedgeRamp(const WedgeRamp &wedge, int left, int width, uint16_t *coverage) {
  const auto distance = [](F32xN inside, F32xN along) {
    const F32xN beside = absolute(inside), around = squareRoot(inside * inside + along * along);
    return along < 0.0F ? around : beside;
  };
  addEach(left, width, coverage, [=](F32xN columns) {
    const F32xN insideFirst = heightOf(wedge.insideFirst, columns),
                insideLast = heightOf(wedge.insideLast, columns);
    const F32xN first = distance(insideFirst, heightOf(wedge.alongFirst, columns));
    const F32xN last = distance(insideLast, heightOf(wedge.alongLast, columns));
    const auto in = wedge.isConvex ? min(insideFirst, insideLast) : max(insideFirst, insideLast);
    const auto isIn = in > 0.0F;
    const auto heightOfEdge = [=](F32xN v, float steepness, float reach) {
      const F32xN inside = select(isIn, v, -v);
      return coverageOf(256.0F * steepness * (inside + reach) + 128.5F);
    };
    const I32xN a = heightOfEdge(first, 1, 0), b = heightOfEdge(last, wedge.steepness, wedge.reach);
    return select(isIn, min(a, b), max(a, b));
  });
}

void addRoundRamp(const RoundRamp &round, int left, int width, uint16_t *coverage) {
  addEach(left, width, coverage, [=](F32xN columns) {
    const F32xN across = round.perColumn * columns + round.column;
    return coverageOf(round.start - round.scale * squareRoot(across * across + round.down * round.down));
  });
}

} // namespace zol::ZOL_LEVEL
