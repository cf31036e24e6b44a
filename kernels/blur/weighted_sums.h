// For level sources: sums of bytes times weights, and their division by the weights, both exact.
#pragma once

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// The factors a and b in every pair of words.
inline I16xN pairs(int a, int b) { return as<I16xN>(splat<I32xN>((a & 0xFFFF) | b * 0x10000)); }

/// The pairs (a, b) in the lower and in the upper half of each block, weighted by the pairs of `factors`.
struct Products {
  I32xN low, high;
};
inline Products operator+(const Products &a, const Products &b) { return {a.low + b.low, a.high + b.high}; }
inline Products weighPairs(U16xN a, U16xN b, I16xN factors) {
  return {mulAddPairs(as<I16xN>(interleaveLow(a, b)), factors),
          mulAddPairs(as<I16xN>(interleaveHigh(a, b)), factors)};
}

/// Divides weighted sums by the weights and truncates, exactly.
///
/// n / weights is at most 255. Where it is not an integer it lies at least 1 / weights below the next one,
/// k. In floats of 128 to 255 half a place is 2^-17, so that the division, rounded, stays below k. So does
/// the product with a reciprocal that is rounded up, by less than 2^-23 of itself, as long as
/// 1 / weights > 2^-17 + 255 * 2^-23; and no multiple of the weights falls below its quotient.
class Quotient {
public:
  explicit Quotient(int weights)
      : weights_(static_cast<float>(weights)), byReciprocal_(weights <= 26000), reciprocal_(1 / weights_) {
    if (static_cast<double>(reciprocal_) * weights < 1)
      reciprocal_ = __builtin_bit_cast(float, __builtin_bit_cast(int32_t, reciprocal_) + 1);
  }

  [[nodiscard]] I32xN of(I32xN n) const {
    const auto sums = convert<F32xN>(n);
    return convert<I32xN>(byReciprocal_ ? sums * reciprocal_ : sums / weights_);
  }

private:
  float weights_;
  bool byReciprocal_;
  float reciprocal_;
};

} // namespace
} // namespace zol::ZOL_LEVEL
