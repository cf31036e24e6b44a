#include "kernels/blur/soften_lines.h"

#include "kernels/blur/weighted_sums.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Between the boxes values are less 2^15: products of words are of signed ones.
constexpr int16_t kBias = INT16_MIN;

/// sum / weights of both halves of a vector.
class Mean {
public:
  explicit Mean(const SoftBox &box) : reciprocal_(splat<U32xN>(box.reciprocal)) {}

  /// Less 2^15.
  [[nodiscard]] I16xN of(U32xN low, U32xN high) const {
    return packI16(as<I32xN>(quotient(low)) + kBias, as<I32xN>(quotient(high)) + kBias);
  }

private:
  [[nodiscard]] U32xN quotient(U32xN n) const {
    const U64xN even = mulEvens(n, reciprocal_);
    const U64xN odd = mulEvens(as<U32xN>(as<U64xN>(n) >> 32), reciprocal_);
    return as<U32xN>(even >> 47 | (odd >> 15 & 0xFFFFFFFF00000000U));
  }

  U32xN reciprocal_;
};

/// One box. `flipIn` and `flipOut` are kBias where plain values come in or go out, else 0.
template <int16_t flipIn, int16_t flipOut>
void boxLines(const SoftBox &box, const uint16_t *from, int count, uint16_t *to) {
  const Mean mean(box);
  const I16xN factors = pairs(box.part, box.whole - box.part);
  for (int x = 0; x < kSoftLanes; x += kLanes<I16xN>) {
    const auto line = [=](int y) { return load<I16xN>(from + ptrdiff_t{y} * kSoftLanes + x) ^ flipIn; };
    // As long as the window lies outside all its lines are the first one.
    I16xN ahead = line(0);
    I16xN behind = ahead;
    U32xN low = widenLow(as<U16xN>(ahead ^ kBias)) * box.sum + box.rounding;
    U32xN high = widenHigh(as<U16xN>(ahead ^ kBias)) * box.sum + box.rounding;
    const auto step = [&](int y) { // from line y to the next
      const I16xN nextAhead = line(y + box.reach + 2 < count ? y + box.reach + 2 : count - 1);
      const I16xN nextBehind = line(y > box.reach ? y - box.reach : 0);
      const Products more = weighPairs(as<U16xN>(nextAhead), as<U16xN>(ahead), factors);
      const Products less = weighPairs(as<U16xN>(behind), as<U16xN>(nextBehind), factors);
      low += as<U32xN>(more.low - less.low);
      high += as<U32xN>(more.high - less.high);
      ahead = nextAhead;
      behind = nextBehind;
    };
    for (int y = -box.reach - 1; y < 0; ++y)
      step(y);
    for (int y = 0; y < count; ++y) {
      store(to + ptrdiff_t{y} * kSoftLanes + x, mean.of(low, high) ^ flipOut);
      step(y);
    }
  }
}

} // namespace

void softenLines(const SoftBox &box, uint16_t *lines, int count, uint16_t *softened) {
  boxLines<kBias, 0>(box, lines, count, softened);
  boxLines<0, 0>(box, softened, count, lines);
  boxLines<0, kBias>(box, lines, count, softened);
}

} // namespace zol::ZOL_LEVEL
