// Exact integers throughout: a weighted sum of bytes stays below 2^24, whatever order it is summed in.
//
// Bytes are added up without widening them first: the sum of 16-bit words made of two bytes each is, modulo
// 2^16, even + 256 * odd; with the sum of the odd bytes alone beside it both follow.

#include "kernels/blur/tent_lines.h"

#include "kernels/blur/weighted_sums.h"
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
  void add(const ByteSums &sums) {
    whole += sums.whole;
    odd += sums.odd;
  }
  void subtract(const ByteSums &sums) {
    whole -= sums.whole;
    odd -= sums.odd;
  }
  [[nodiscard]] U16xN even() const { return whole - (odd << 8); }
};

ByteSums loadSums(const int16_t *from) { return {load<U16xN>(from), load<U16xN>(from + kLanes<U16xN>)}; }
void storeSums(int16_t *to, const ByteSums &sums) {
  store(to, sums.whole);
  store(to + kLanes<U16xN>, sums.odd);
}

alignas(kVectorBytes) constexpr uint8_t kAbsent[kTentMaxLanes] = {};

} // namespace

void tentLines(const Tent &tent, const StepGroups &groups, const TentSource &source, int from, int to,
               int lanes, const TentSums &sums, uint8_t *dst, ptrdiff_t dstStride) {
  constexpr int kAtOnce = kVectorBytes < kTentLaneGroup ? 2 : 1; // vectors
  constexpr int kLinesAhead = 8;                                 // that are fetched before they are needed
  static_assert(kTentLaneGroup % (kAtOnce * kVectorBytes) == 0);

  ptrdiff_t stepOffset[Tent::kMaxSteps];
  for (int i = 0; i < groups.singleCount; ++i)
    stepOffset[i] = groups.single[i] * source.stride;
  const auto line = [&](int k) {
    return k >= 0 && k < source.count ? source.lines + (k - source.begin) * source.stride : kAbsent;
  };
  const I16xN rampFactors = pairs(tent.slope, tent.stepFall);
  const I16xN edgeFactors = pairs(tent.edgeFall, 0);

  // The sum of the group that begins at line k is kept in row k, modulo the rows kept.
  const int kept = groups.keptLines();
  int rowOfLine = kept == 0 ? 0 : (from % kept + kept) % kept;
  const auto groupFrom = [&](int distance) {
    const int row = rowOfLine + distance;
    return sums.groups + ptrdiff_t{row < 0 ? row + kept : row < kept ? row : row - kept} * lanes;
  };
  int16_t *groupAhead[Tent::kMaxSteps];
  const int16_t *groupBehind[Tent::kMaxSteps];
  const uint8_t *newest[Tent::kMaxSteps]; // lines of the furthest group ahead

  // Single steps present ahead of the line, stepsFrom to stepsTo, and behind it, the first stepsBehind.
  int stepsFrom = groups.singleCount;
  int stepsTo = groups.singleCount;
  int stepsBehind = 0;
  int weights = 1;
  Quotient quotient(weights);
  for (int y = from; y < to; ++y) {
    while (stepsFrom > 0 && groups.single[stepsFrom - 1] >= -y)
      --stepsFrom;
    while (stepsTo > 0 && groups.single[stepsTo - 1] >= source.count - y)
      --stepsTo;
    while (stepsBehind < groups.singleCount && groups.single[stepsBehind] < y)
      ++stepsBehind;
    for (int i = 0; i < groups.count; ++i) {
      groupAhead[i] = groupFrom(groups.start[i]);
      groupBehind[i] = groupFrom(-1 - groups.start[i] - groups.shape[groups.size - 1]);
    }
    for (int i = 0; i < groups.size; ++i)
      newest[i] = line(y + groups.start[groups.count - 1] + groups.shape[i]);
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
      if (groups.count > 0) {
        ByteSums group[kAtOnce];
        for (int i = 0; i < groups.size; ++i)
          for (int v = 0; v < kAtOnce; ++v)
            group[v].add(load<U16xN>(newest[i] + x + v * kVectorBytes));
        for (int v = 0; v < kAtOnce; ++v)
          storeSums(groupAhead[groups.count - 1] + x + v * kVectorBytes, group[v]);
        for (int i = 0; i < groups.count; ++i)
          for (int v = 0; v < kAtOnce; ++v) {
            steps[v].add(loadSums(groupAhead[i] + x + v * kVectorBytes));
            steps[v].subtract(loadSums(groupBehind[i] + x + v * kVectorBytes));
          }
      }

      for (int v = 0; v < kAtOnce; ++v) {
        const int at = x + v * kVectorBytes;
        // The ramp: its ends move on, and its middle changes sides.
        int16_t *const slopes = sums.slopes + at;
        ByteSums ramp = loadSums(slopes);
        const U16xN middle = load<U16xN>(before + at);
        ramp.add(load<U16xN>(rampAhead + at));
        ramp.add(load<U16xN>(rampBehind + at));
        ramp.whole -= middle + middle;
        ramp.odd -= (middle >> 8) + (middle >> 8);
        storeSums(slopes, ramp);

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
    if (++rowOfLine == kept)
      rowOfLine = 0;
  }
}

} // namespace zol::ZOL_LEVEL
