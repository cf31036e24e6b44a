#include "kernels/color/gradient_rows.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kPixels = kLanes<I32xN>;

I32xN placesOf(I32xN position, const GradientTurn &turn) {
  constexpr int kOne = 65536;
  position -= turn.offset;
  switch (turn.ends) {
  case GradientEnds::hold: position = max(min(position, splat<I32xN>(kOne)), I32xN{}); break;
  case GradientEnds::repeat: position &= kOne - 1; break;
  case GradientEnds::mirror:
    position &= 2 * kOne - 1;
    position = min(position, 2 * kOne - position);
    break;
  }
  return position >> 4;
}

/// Of a turn, 65536 = 1.0, clockwise from the right.
I32xN turnOf(F32xN right, F32xN down) {
  const F32xN x = absolute(right), y = absolute(down);
  const F32xN greater = max(max(x, y), splat<F32xN>(0x1p-100F)); // the centre has no direction
  const F32xN z = min(x, y) / greater, square = z * z;
  const F32xN octant =
      z * (((((square * -122.235020F + 549.131795F) * square - 1214.37226F) * square + 2018.69935F) * square -
            3469.38194F) *
               square +
           10430.1407F);
  I32xN turn = convert<I32xN>(octant + 0.5F);
  turn = y > x ? 16384 - turn : turn;
  turn = right < 0 ? 32768 - turn : turn;
  return down < 0 ? -turn : turn;
}

/// Runs place(i, lanes) over the row; its ends are `ends`, known where the loop is compiled.
template <class Positions>
void forEachPosition(const GradientTurn &given, int32_t *places, int count, Positions positions) {
  const auto all = [&](auto ends) {
    const GradientTurn turn{given.offset, ends};
    forEachVector<I32xN>(count, [&](int i, int n) { store(places + i, placesOf(positions(i, n), turn), n); });
  };
  switch (given.ends) {
  case GradientEnds::hold: return all(std::integral_constant<GradientEnds, GradientEnds::hold>());
  case GradientEnds::repeat: return all(std::integral_constant<GradientEnds, GradientEnds::repeat>());
  case GradientEnds::mirror: return all(std::integral_constant<GradientEnds, GradientEnds::mirror>());
  }
}

} // namespace

void linearPlaces(int64_t first, int64_t step, const GradientTurn &turn, int32_t *places, int count) {
  I64xN low, high; // evens() of both gives the pixels in their order
  for (int i = 0; i < kLanes<I64xN>; ++i) {
    const int pixel = i / 2 * 4 + i % 2;
    low[i] = first + pixel * step;
    high[i] = first + (pixel + 2) * step;
  }
  const auto next = splat<I64xN>(kPixels * step);
  forEachPosition(turn, places, count, [&](int, int) {
    const auto whole = [](I64xN v) { return as<I32xN>(as<U64xN>(v) >> 16); };
    const I32xN positions = evens(whole(low), whole(high));
    low += next;
    high += next;
    return positions;
  });
}

void radialPlaces(const float *across, float down, float scale, const GradientTurn &turn, int32_t *places,
                  int count) {
  forEachPosition(turn, places, count, [=](int i, int n) {
    const auto u = load<F32xN>(across + i, n);
    const F32xN distance = squareRoot(u * u + down * down) * scale;
    return convert<I32xN>(min(distance, splat<F32xN>(0x1p30F)));
  });
}

void conicalPlaces(const float *across, float down, int32_t angle, const GradientTurn &turn, int32_t *places,
                   int count) {
  forEachPosition(turn, places, count, [=](int i, int n) {
    return (turnOf(load<F32xN>(across + i, n), splat<F32xN>(down)) - angle) & 0xFFFF;
  });
}

} // namespace zol::ZOL_LEVEL
