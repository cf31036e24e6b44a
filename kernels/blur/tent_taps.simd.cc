#include "kernels/blur/tent_taps.h"

#include "kernels/blur/weighted_sums.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Even and odd bytes apart, in words.
struct Words {
  U16xN even, odd;
};
inline Words operator+(const Words &a, const Words &b) { return {a.even + b.even, a.odd + b.odd}; }

inline U16xN divided(const Products &sums, const Quotient &quotient) {
  return as<U16xN>(packI16(quotient.of(sums.low), quotient.of(sums.high)));
}

} // namespace

void tentTaps(const Tent &tent, const uint8_t *const *taps, int weights, int count, uint8_t *dst) {
  static_assert(kTentMaxTaps == 3);
  const I16xN nearFactors = pairs(tent.weight[0], tent.weight[1]);
  const I16xN farFactors = pairs(tent.weight[2], tent.weight[3]);
  const Quotient quotient(weights);
  forEachVector<U8xN>(count, [&](int i, int bytes) {
    const auto words = [&](int d) {
      const auto both = as<U16xN>(load<U8xN>(taps[d] + i, bytes));
      return Words{both & 0xFF, both >> 8};
    };
    const Words centre = words(0);
    const Words beside = words(-1) + words(1);
    Products even = weighPairs(centre.even, beside.even, nearFactors);
    Products odd = weighPairs(centre.odd, beside.odd, nearFactors);
    if (tent.reach > 1) {
      const Words second = words(-2) + words(2);
      const Words third = words(-3) + words(3);
      even = even + weighPairs(second.even, third.even, farFactors);
      odd = odd + weighPairs(second.odd, third.odd, farFactors);
    }
    const U16xN result = divided(even, quotient) | divided(odd, quotient) << 8;
    store(dst + i, as<U8xN>(result), bytes);
  });
}

} // namespace zol::ZOL_LEVEL
