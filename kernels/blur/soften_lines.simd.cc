#include "kernels/blur/soften_lines.h"

#include "kernels/blur/weighted_sums.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// What makes signed values of unsigned ones, as products of words need them.
constexpr uint16_t kFlip = 0x8000;

/// sum / weights, rounded, of the lower and the upper halves of blocks.
class Mean {
public:
  explicit Mean(const SoftBox &box) : reciprocal_(splat<U32xN>(box.reciprocal)) {}

  [[nodiscard]] U16xN of(U32xN low, U32xN high) const {
    return packU16(as<I32xN>(quotient(low)), as<I32xN>(quotient(high)));
  }

private:
  [[nodiscard]] U32xN quotient(U32xN n) const {
    const U64xN even = mulEvens(n, reciprocal_);
    const U64xN odd = mulEvens(as<U32xN>(as<U64xN>(n) >> 32), reciprocal_);
    return alternate(as<U32xN>(even >> 47), as<U32xN>(odd >> 15));
  }

  U32xN reciprocal_;
};

/// One box. `flipIn` and `flipOut` are kFlip where plain values come in or go out; between boxes they are
/// flipped.
template <uint16_t flipIn, uint16_t flipOut>
void boxLines(const SoftBox &box, const uint16_t *src, ptrdiff_t srcStride, int count, uint16_t *dst,
              ptrdiff_t dstStride) {
  constexpr int kLinesAhead = 8; // that are fetched before they are needed
  constexpr uint16_t kFlipMean = flipOut ^ kFlip;
  const Mean mean(box);
  const I16xN factors = pairs(box.part, box.whole - box.part);
  const int reach = box.reach;
  for (int x = 0; x < kSoftLanes; x += kLanes<U16xN>) {
    const auto take = [](const uint16_t *line) { return load<U16xN>(line) ^ flipIn; };
    // The ends of the window, which begins so far outside that all its lines are the first one.
    const uint16_t *aheadLine = src + x, *behindLine = aheadLine;
    U16xN ahead = take(aheadLine), behind = ahead;
    const U16xN first = ahead ^ kFlip;
    U32xN low = widenLow(first) * box.sum + box.rounding;
    U32xN high = widenHigh(first) * box.sum + box.rounding;
    const auto moveOn = [&](ptrdiff_t aheadStep, ptrdiff_t behindStep) {
      aheadLine += aheadStep;
      behindLine += behindStep;
      __builtin_prefetch(aheadLine + kLinesAhead * aheadStep);
      const U16xN nextAhead = take(aheadLine), nextBehind = take(behindLine);
      const Products more = weighPairs(nextAhead, ahead, factors);
      const Products less = weighPairs(behind, nextBehind, factors);
      low += as<U32xN>(more.low - less.low);
      high += as<U32xN>(more.high - less.high);
      ahead = nextAhead;
      behind = nextBehind;
    };

    const int lastAhead = count - reach - 2; // from which on the window's end stays where it is
    for (int y = -reach - 1; y < 0; ++y)
      moveOn(y < lastAhead ? srcStride : 0, 0);
    uint16_t *out = dst + x;
    for (int y = 0; y < count;) {
      const ptrdiff_t aheadStep = y < lastAhead ? srcStride : 0, behindStep = y > reach ? srcStride : 0;
      int end = y < lastAhead ? lastAhead : count;
      end = y <= reach && reach < end ? reach + 1 : end;
      for (; y < end; ++y, out += dstStride) {
        store(out, mean.of(low, high) ^ kFlipMean);
        moveOn(aheadStep, behindStep);
      }
    }
  }
}

} // namespace

void softenLines(const SoftBox &box, const uint16_t *src, ptrdiff_t srcStride, int count, uint16_t *work,
                 uint16_t *dst, ptrdiff_t dstStride) {
  uint16_t *const moreWork = work + ptrdiff_t{count} * kSoftLanes;
  boxLines<kFlip, 0>(box, src, srcStride, count, work, kSoftLanes);
  boxLines<0, 0>(box, work, kSoftLanes, count, moreWork, kSoftLanes);
  boxLines<0, kFlip>(box, moreWork, kSoftLanes, count, dst, dstStride);
}

} // namespace zol::ZOL_LEVEL
