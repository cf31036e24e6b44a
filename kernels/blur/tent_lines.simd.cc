// Exact integers throughout: a weighted sum of bytes stays below 2^24, whatever order it is summed in.
//
// Bytes are added up without widening them first: the sum of 16-bit words made of two bytes each is, modulo
// 2^16, even + 256 * odd; with the sum of the odd bytes alone beside it both follow.

#include "kernels/blur/tent_lines.h"

#include <immintrin.h>

namespace zol::ZOL_LEVEL {
namespace {

#ifdef __AVX2__
constexpr int kBytes = 32;
#else
constexpr int kBytes = 16;
#endif
using Words [[gnu::vector_size(kBytes)]] = uint16_t;
using Sums [[gnu::vector_size(kBytes)]] = int32_t;
using Floats [[gnu::vector_size(kBytes)]] = float;
using WordsAnywhere [[gnu::vector_size(kBytes), gnu::aligned(1), gnu::may_alias]] = uint16_t;
using SumsAnywhere [[gnu::vector_size(kBytes), gnu::aligned(1), gnu::may_alias]] = int32_t;

/// The pairs (a, b) in the lower and in the upper half of each 128 bits, weighted by the pairs of `factors`.
struct Products {
  Sums low, high;
};

#ifdef __AVX2__
inline Products weighPairs(Words a, Words b, Words factors) {
  const auto x = reinterpret_cast<__m256i>(a);
  const auto y = reinterpret_cast<__m256i>(b);
  const auto f = reinterpret_cast<__m256i>(factors);
  return {reinterpret_cast<Sums>(_mm256_madd_epi16(_mm256_unpacklo_epi16(x, y), f)),
          reinterpret_cast<Sums>(_mm256_madd_epi16(_mm256_unpackhi_epi16(x, y), f))};
}
inline Words narrow(Sums low, Sums high) {
  return reinterpret_cast<Words>(
      _mm256_packs_epi32(reinterpret_cast<__m256i>(low), reinterpret_cast<__m256i>(high)));
}
#else
inline Products weighPairs(Words a, Words b, Words factors) {
  const auto x = reinterpret_cast<__m128i>(a);
  const auto y = reinterpret_cast<__m128i>(b);
  const auto f = reinterpret_cast<__m128i>(factors);
  return {reinterpret_cast<Sums>(_mm_madd_epi16(_mm_unpacklo_epi16(x, y), f)),
          reinterpret_cast<Sums>(_mm_madd_epi16(_mm_unpackhi_epi16(x, y), f))};
}
inline Words narrow(Sums low, Sums high) {
  return reinterpret_cast<Words>(
      _mm_packs_epi32(reinterpret_cast<__m128i>(low), reinterpret_cast<__m128i>(high)));
}
#endif

inline Words load(const void *at) { return *static_cast<const WordsAnywhere *>(at); }
inline void store(void *at, Words value) { *static_cast<WordsAnywhere *>(at) = value; }

/// Sums of bytes that were never taken apart; signed, as 16 bits wrap.
struct ByteSums {
  Words whole{}, odd{};

  void add(Words bytes) {
    whole += bytes;
    odd += bytes >> 8;
  }
  void subtract(Words bytes) {
    whole -= bytes;
    odd -= bytes >> 8;
  }
  [[nodiscard]] Words even() const { return whole - (odd << 8); }
};

/// The factors a and b in every pair of words.
inline Words pairs(int a, int b) {
  return reinterpret_cast<Words>(Sums{} + static_cast<int32_t>((a & 0xFFFF) | b * 0x10000));
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

  [[nodiscard]] Sums of(Sums n) const {
    const Floats sums = __builtin_convertvector(n, Floats);
    return __builtin_convertvector(byReciprocal_ ? sums * reciprocal_ : sums / weights_, Sums);
  }

private:
  float weights_;
  bool byReciprocal_;
  float reciprocal_;
};

alignas(kBytes) constexpr uint8_t kAbsent[kTentMaxLanes] = {};

} // namespace

void tentLines(const Tent &tent, const TentSource &source, int from, int to, int lanes, const TentSums &sums,
               uint8_t *dst, ptrdiff_t dstStride) {
  constexpr int kAtOnce = 2;     // vectors
  constexpr int kLinesAhead = 8; // that are fetched before they are needed
  static_assert(kTentLaneGroup % (kAtOnce * kBytes) == 0);

  ptrdiff_t stepOffset[Tent::kMaxSteps];
  for (int i = 0; i < tent.stepCount; ++i)
    stepOffset[i] = tent.step[i] * source.stride;
  const auto line = [&](int k) {
    return k >= 0 && k < source.count ? source.lines + (k - source.begin) * source.stride : kAbsent;
  };
  const Words rampFactors = pairs(tent.slope, tent.stepFall);
  const Words edgeFactors = pairs(tent.edgeFall, 0);

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

    for (int x = 0; x < lanes; x += kAtOnce * kBytes) {
      __builtin_prefetch(source.lines + (here + (tent.ramp + kLinesAhead) * source.stride + x));
      ByteSums steps[kAtOnce];
      const uint8_t *const start = source.lines + x;
      for (int i = stepsFrom; i < stepsTo; ++i)
        for (int v = 0; v < kAtOnce; ++v)
          steps[v].add(load(start + (here + stepOffset[i]) + v * kBytes));
      for (int i = 0; i < stepsBehind; ++i)
        for (int v = 0; v < kAtOnce; ++v)
          steps[v].subtract(load(start + (here - source.stride - stepOffset[i]) + v * kBytes));

      for (int v = 0; v < kAtOnce; ++v) {
        const int at = x + v * kBytes;
        // The ramp: its ends move on, and its middle changes sides.
        int16_t *const slopes = sums.slopes + at;
        ByteSums ramp{load(slopes), load(slopes + kBytes / 2)};
        const Words middle = load(before + at);
        ramp.add(load(rampAhead + at));
        ramp.add(load(rampBehind + at));
        ramp.whole -= middle + middle;
        ramp.odd -= (middle >> 8) + (middle >> 8);
        store(slopes, ramp.whole);
        store(slopes + kBytes / 2, ramp.odd);

        SumsAnywhere *const weighted = reinterpret_cast<SumsAnywhere *>(sums.weighted + at);
        const Products even = weighPairs(ramp.even(), steps[v].even(), rampFactors);
        const Products odd = weighPairs(ramp.odd, steps[v].odd, rampFactors);
        Sums sum[4] = {weighted[0] + even.low, weighted[1] + even.high, weighted[2] + odd.low,
                       weighted[3] + odd.high};
        if (tent.edgeFall != 0) {
          ByteSums edge;
          edge.add(load(edgeAhead + at));
          edge.subtract(load(edgeBehind + at));
          const Products evenEdge = weighPairs(edge.even(), Words{}, edgeFactors);
          const Products oddEdge = weighPairs(edge.odd, Words{}, edgeFactors);
          sum[0] += evenEdge.low;
          sum[1] += evenEdge.high;
          sum[2] += oddEdge.low;
          sum[3] += oddEdge.high;
        }
        for (int i = 0; i < 4; ++i)
          weighted[i] = sum[i];
        if (y >= 0) {
          const Words evenBytes = narrow(quotient.of(sum[0]), quotient.of(sum[1]));
          const Words oddBytes = narrow(quotient.of(sum[2]), quotient.of(sum[3]));
          store(dst + at, evenBytes | oddBytes << 8);
        }
      }
    }
    if (y >= 0)
      dst += dstStride;
  }
}

} // namespace zol::ZOL_LEVEL
