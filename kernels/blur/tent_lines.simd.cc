// Exact integers throughout: a weighted sum of bytes stays below 2^24, whatever order it is summed in.
//
// Bytes are added up without widening them first: the sum of 16-bit words made of two bytes each is, modulo
// 2^16, even + 256 * odd; with the sum of the odd bytes alone beside it both follow.

#include "kernels/blur/tent_lines.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Sums of bytes that were never taken apart; signed, as 16 bits wrap.
struct ByteSums {
  U16xN whole{}, odd{};

  void add(U16xN bytes) {
    whole += bytes;
    odd += bytes >> 8;
  }
  void subtract(U16xN bytes) {
    whole -= bytes;
    odd -= bytes >> 8;
  }
  [[nodiscard]] U16xN even() const { return whole - (odd << 8); }
};

/// The factors a and b in every pair of words.
inline I16xN pairs(int a, int b) { return as<I16xN>(splat<I32xN>((a & 0xFFFF) | b * 0x10000)); }

/// The pairs (a, b) in the lower and in the upper half of each block, weighted by the pairs of `factors`.
struct Products {
  I32xN low, high;
};
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

alignas(kVectorBytes) constexpr uint8_t kAbsent[kTentMaxLanes] = {};

} // namespace

void tentLines(const Tent &tent, const TentSource &source, int from, int to, int lanes, const TentSums &sums,
               uint8_t *dst, ptrdiff_t dstStride) {
  constexpr int kAtOnce = kVectorBytes < kTentLaneGroup ? 2 : 1; // vectors
  constexpr int kLinesAhead = 8;                                 // that are fetched before they are needed
  static_assert(kTentLaneGroup % (kAtOnce * kVectorBytes) == 0);

  ptrdiff_t stepOffset[Tent::kMaxSteps];
  for (int i = 0; i < tent.stepCount; ++i)
    stepOffset[i] = tent.step[i] * source.stride;
  const auto line = [&](int k) {
    return k >= 0 && k < source.count ? source.lines + (k - source.begin) * source.stride : kAbsent;
  };
  const I16xN rampFactors = pairs(tent.slope, tent.stepFall);
  const I16xN edgeFactors = pairs(tent.edgeFall, 0);

  // Steps present ahead of the line, stepsFrom to stepsTo, and behind it, the first stepsBehind.
  int stepsFrom = tent.stepCount;
  int stepsTo = tent.stepCount;
  int stepsBehind = 0;
  int weights = 1;
  Quotient quotient(weights);
  for (int y = from; y < to; ++y) {
    while (stepsFrom > 0 && tent.step[stepsFrom - 1] >= -y)
      --stepsFrom;
    while (stepsTo > 0 && tent.step[stepsTo - 1] >= source.count - y)
      --stepsTo;
    while (stepsBehind < tent.stepCount && tent.step[stepsBehind] < y)
      ++stepsBehind;
    const ptrdiff_t here = (y - source.begin) * source.stride;
    const uint8_t *const before = line(y - 1);
    const uint8_t *const rampAhead = line(y - 1 + tent.ramp);
    const uint8_t *const rampBehind = line(y - 1 - tent.ramp);
    const uint8_t *const edgeAhead = line(y + tent.reach);
    const uint8_t *const edgeBehind = line(y - 1 - tent.reach);
    if (const int present = y < 0 ? 1 : tent.sumAt(y, source.count); present != weights) {
      weights = present;
      quotient = Quotient(weights);
    }

    for (int x = 0; x < lanes; x += kAtOnce * kVectorBytes) {
      __builtin_prefetch(source.lines + (here + (tent.ramp + kLinesAhead) * source.stride + x));
      ByteSums steps[kAtOnce];
      const uint8_t *const start = source.lines + x;
      for (int i = stepsFrom; i < stepsTo; ++i)
        for (int v = 0; v < kAtOnce; ++v)
          steps[v].add(load<U16xN>(start + (here + stepOffset[i]) + v * kVectorBytes));
      for (int i = 0; i < stepsBehind; ++i)
        for (int v = 0; v < kAtOnce; ++v)
          steps[v].subtract(load<U16xN>(start + (here - source.stride - stepOffset[i]) + v * kVectorBytes));

      for (int v = 0; v < kAtOnce; ++v) {
        const int at = x + v * kVectorBytes;
        // The ramp: its ends move on, and its middle changes sides.
        int16_t *const slopes = sums.slopes + at;
        ByteSums ramp{load<U16xN>(slopes), load<U16xN>(slopes + kVectorBytes / 2)};
        const U16xN middle = load<U16xN>(before + at);
        ramp.add(load<U16xN>(rampAhead + at));
        ramp.add(load<U16xN>(rampBehind + at));
        ramp.whole -= middle + middle;
        ramp.odd -= (middle >> 8) + (middle >> 8);
        store(slopes, ramp.whole);
        store(slopes + kVectorBytes / 2, ramp.odd);

        int32_t *const weighted = sums.weighted + at;
        const Products even = weighPairs(ramp.even(), steps[v].even(), rampFactors);
        const Products odd = weighPairs(ramp.odd, steps[v].odd, rampFactors);
        I32xN sum[4] = {even.low, even.high, odd.low, odd.high};
        for (int i = 0; i < 4; ++i)
          sum[i] += load<I32xN>(weighted + i * kLanes<I32xN>);
        if (tent.edgeFall != 0) {
          ByteSums edge;
          edge.add(load<U16xN>(edgeAhead + at));
          edge.subtract(load<U16xN>(edgeBehind + at));
          const Products evenEdge = weighPairs(edge.even(), U16xN{}, edgeFactors);
          const Products oddEdge = weighPairs(edge.odd, U16xN{}, edgeFactors);
          sum[0] += evenEdge.low;
          sum[1] += evenEdge.high;
          sum[2] += oddEdge.low;
          sum[3] += oddEdge.high;
        }
        for (int i = 0; i < 4; ++i)
          store(weighted + i * kLanes<I32xN>, sum[i]);
        if (y >= 0) {
          const auto evenBytes = as<U16xN>(packI16(quotient.of(sum[0]), quotient.of(sum[1])));
          const auto oddBytes = as<U16xN>(packI16(quotient.of(sum[2]), quotient.of(sum[3])));
          store(dst + at, evenBytes | oddBytes << 8);
        }
      }
    }
    if (y >= 0)
      dst += dstStride;
  }
}

} // namespace zol::ZOL_LEVEL
