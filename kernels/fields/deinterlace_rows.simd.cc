#include "kernels/fields/deinterlace_rows.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

static_assert(kLanes<U32xN> <= kCombingPadding);

/// Up to this factor the shifted product of a squared difference is a signed 16-bit number.
constexpr uint32_t kSmallEdgeSquared = 2063; // 2063 * 255 * 255 < 2^27

/// Blue, green, red, alpha. 6 * 255 is a signed 16-bit lane.
I16xN channelWeights() { return as<I16xN>(splat<U64xN>(0x0000'0003'0006'0001)); }

/// The weighted sum over channels of (edgeSquared * square) >> 12, in two parts a pixel.
template <bool kSmall> struct Excuse;

template <> struct Excuse<true> {
  explicit Excuse(uint32_t edgeSquared) : factor(splat<U16xN>(static_cast<uint16_t>(edgeSquared << 4))) {}
  [[nodiscard]] I32xN operator()(U16xN square, I16xN weights) const {
    return mulAddPairs(as<I16xN>(mulHigh(square, factor)), weights);
  }
  U16xN factor;
};

template <> struct Excuse<false> {
  explicit Excuse(uint32_t edgeSquared)
      : low(splat<U16xN>(static_cast<uint16_t>(edgeSquared))),
        high(splat<U16xN>(static_cast<uint16_t>(edgeSquared >> 16))) {}
  /// The 32-bit product in halves, the upper one signed: high half * 16 + low half / 4096 is its shift.
  [[nodiscard]] I32xN operator()(U16xN square, I16xN weights) const {
    const U16xN upper = mulHigh(square, low) + square * high;
    const U16xN lower = square * low >> 12;
    return (mulAddPairs(as<I16xN>(upper), weights) << 4) + mulAddPairs(as<I16xN>(lower), weights);
  }
  U16xN low, high;
};

/// Half the pixels of a vector, 16 bits a channel, in; two 32-bit parts a pixel out.
template <class Excuse>
I32xN combingParts(I16xN above, I16xN at, I16xN below, const Excuse &excuse, I16xN weights) {
  const I16xN up = above - at;
  const I16xN down = below - at;
  const I16xN across = above - below;
  return mulAddPairs(up, down * weights) - excuse(as<U16xN>(across * across), weights);
}

template <bool kSmall>
void combingWith(const DeinterlaceLines &lines, int width, uint32_t edgeSquared, int32_t *combing) {
  const I16xN weights = channelWeights();
  const Excuse<kSmall> excuse(edgeSquared);
  forEachVector<U32xN>(width, [=, l = lines](int x, int n) {
    const auto above = as<U8xN>(load<U32xN>(l.above + x, n));
    const auto at = as<U8xN>(load<U32xN>(l.at + x, n));
    const auto below = as<U8xN>(load<U32xN>(l.below + x, n));
    const I32xN low =
        combingParts(widenLow<I16xN>(above), widenLow<I16xN>(at), widenLow<I16xN>(below), excuse, weights);
    const I32xN high =
        combingParts(widenHigh<I16xN>(above), widenHigh<I16xN>(at), widenHigh<I16xN>(below), excuse, weights);
    store(combing + x, evens(low, high) + odds(low, high));
  });
}

template <bool kBlend>
void repairWith(const DeinterlaceLines &lines, const int32_t *const combing[3], int width, int32_t limit,
                uint32_t *out) {
  const I32xN limits = splat<I32xN>(limit);
  forEachVector<U32xN>(width, [=, l = lines, before = combing[0], here = combing[1],
                               after = combing[2]](int x, int n) {
    const auto line = load<U32xN>(l.at + x, n);
    U8xN rebuilt = averageDown(as<U8xN>(load<U32xN>(l.above + x, n)), as<U8xN>(load<U32xN>(l.below + x, n)));
    if (kBlend)
      rebuilt = averageDown(rebuilt, as<U8xN>(line)); // (a + b + 2 c) >> 2: the first truncation cannot show
    const I32xN sum = load<I32xN>(before + x) + load<I32xN>(after + x) + 2 * load<I32xN>(here + x);
    store(out + x, sum > limits ? as<U32xN>(rebuilt) & 0x00FFFFFF : line, n);
  });
}

} // namespace

void combingOfLine(const DeinterlaceLines &lines, int width, uint32_t edgeSquared, int32_t *combing) {
  const auto measure = edgeSquared <= kSmallEdgeSquared ? combingWith<true> : combingWith<false>;
  measure(lines, width, edgeSquared, combing);
}

void repairLine(const DeinterlaceLines &lines, const int32_t *const combing[3], int width, int32_t limit,
                bool blend, uint32_t *out) {
  const auto repair = blend ? repairWith<true> : repairWith<false>;
  repair(lines, combing, width, limit, out);
}

} // namespace zol::ZOL_LEVEL
