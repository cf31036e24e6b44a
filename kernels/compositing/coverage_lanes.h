// Coverages of pixels, 256 = whole, for level sources.
#pragma once

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// As they are stored.
using Coverages = Vector<uint16_t, kLanes<U32xN>>;

/// 0, 1, 2 and so on.
inline F32xN laneNumbers() {
  F32xN numbers;
  for (int i = 0; i < kLanes<F32xN>; ++i)
    numbers[i] = static_cast<float>(i);
  return numbers;
}

/// Within 0..256, rounded down.
inline I32xN coverageOf(F32xN height) {
  return convert<I32xN>(min(max(height, splat<F32xN>(0)), splat<F32xN>(256)));
}

/// The pixels' alphas times the coverage, rounded to the nearest.
inline U32xN covered(U32xN pixels, const uint16_t *coverage, int count) {
  const auto by = convert<I32xN>(load<Coverages>(coverage, count));
  return as<U32xN>(mulAddPairs(as<I16xN>(pixels >> 24), as<I16xN>(by)) + 128) >> 8;
}

} // namespace
} // namespace zol::ZOL_LEVEL
