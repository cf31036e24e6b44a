// Whole quotients by divisors that differ from lane to lane, for level sources.
#pragma once

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// A little more than 1 / d in single precision: so much that a whole quotient never falls short and so
/// little that no other reaches the next whole number, for dividends below 2^21.
inline F32xN reciprocal(U32xN divisor) { return (1.0F + 0x1p-22F) / convert<F32xN>(as<I32xN>(divisor)); }
inline I32xN quotient(U32xN dividend, F32xN reciprocal) {
  return convert<I32xN>(convert<F32xN>(as<I32xN>(dividend)) * reciprocal);
}

/// Divisors, from 1 on, of lanes of 16 bits.
class Divisors {
public:
  explicit Divisors(U16xN divisors)
      : low_(reciprocal(widenLow(divisors))), high_(reciprocal(widenHigh(divisors))) {}

  /// dividends / divisors, rounded down. Quotients are below 2^15.
  [[nodiscard]] U16xN divide(U16xN dividends) const {
    return as<U16xN>(packI16(quotient(widenLow(dividends), low_), quotient(widenHigh(dividends), high_)));
  }

private:
  F32xN low_, high_;
};

} // namespace
} // namespace zol::ZOL_LEVEL
