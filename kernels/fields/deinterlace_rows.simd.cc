#include "kernels/fields/deinterlace_rows.h"

#include "kernels/simd/lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kPixelsAtOnce = static_cast<int>(sizeof(Lanes) / sizeof(uint32_t));
static_assert(kPixelsAtOnce <= kCombingPadding);

/// Up to this factor the shifted product of a squared difference is a signed 16-bit number.
constexpr uint32_t kSmallEdgeSquared = 2063; // 2063 * 255 * 255 < 2^27

/// Blue, green, red, alpha. 6 * 255 is a signed 16-bit lane.
Lanes channelWeights() {
  static constexpr int16_t kWeights[16] = {1, 6, 3, 0, 1, 6, 3, 0, 1, 6, 3, 0, 1, 6, 3, 0};
  return load(kWeights);
}

/// The weighted sum over channels of (edgeSquared * square) >> 12, in two parts a pixel.
template <bool kSmall> struct Excuse;

template <> struct Excuse<true> {
  explicit Excuse(uint32_t edgeSquared) : factor(all16(static_cast<int>(edgeSquared << 4))) {}
  [[nodiscard]] Lanes operator()(Lanes square, Lanes weights) const {
    return mulAdd16(mulHighUnsigned16(square, factor), weights);
  }
  Lanes factor;
};

template <> struct Excuse<false> {
  explicit Excuse(uint32_t edgeSquared)
      : low(all16(static_cast<int>(edgeSquared & 0xFFFF))), high(all16(static_cast<int>(edgeSquared >> 16))) {
  }
  /// The 32-bit product in halves, the upper one signed: high half * 16 + low half / 4096 is its shift.
  [[nodiscard]] Lanes operator()(Lanes square, Lanes weights) const {
    const Lanes upper = add16(mulHighUnsigned16(square, low), mulLow16(square, high));
    const Lanes lower = shiftRight16<12>(mulLow16(square, low));
    return add32(shiftLeft32<4>(mulAdd16(upper, weights)), mulAdd16(lower, weights));
  }
  Lanes low, high;
};

/// Half the pixels of a vector, 16 bits a channel, in; two 32-bit parts a pixel out.
template <class Excuse>
Lanes combingParts(Lanes above, Lanes at, Lanes below, const Excuse &excuse, Lanes weights) {
  const Lanes up = sub16(above, at);
  const Lanes down = sub16(below, at);
  const Lanes across = sub16(above, below);
  return sub32(mulAdd16(up, mulLow16(down, weights)), excuse(mulLow16(across, across), weights));
}

template <bool kSmall>
void combingWith(const DeinterlaceLines &lines, int width, uint32_t edgeSquared, int32_t *combing) {
  const Lanes weights = channelWeights();
  const Excuse<kSmall> excuse(edgeSquared);
  const auto step = [&](const uint32_t *a, const uint32_t *c, const uint32_t *b, int32_t *out) {
    const Lanes above = load(a);
    const Lanes at = load(c);
    const Lanes below = load(b);
    const Lanes low = combingParts(interleaveLow8(above, zeros()), interleaveLow8(at, zeros()),
                                   interleaveLow8(below, zeros()), excuse, weights);
    const Lanes high = combingParts(interleaveHigh8(above, zeros()), interleaveHigh8(at, zeros()),
                                    interleaveHigh8(below, zeros()), excuse, weights);
    store(out, add32(evens32(low, high), odds32(low, high)));
  };
  const DeinterlaceLines l = lines;
  int x = 0;
  for (; x + kPixelsAtOnce <= width; x += kPixelsAtOnce)
    step(l.above + x, l.at + x, l.below + x, combing + x);
  if (const int rest = width - x; rest > 0) {
    uint32_t pixels[3][kPixelsAtOnce] = {};
    const size_t bytes = static_cast<size_t>(rest) * sizeof(uint32_t);
    __builtin_memcpy(pixels[0], l.above + x, bytes);
    __builtin_memcpy(pixels[1], l.at + x, bytes);
    __builtin_memcpy(pixels[2], l.below + x, bytes);
    step(pixels[0], pixels[1], pixels[2], combing + x);
  }
}

/// (a + b) >> 1 of bytes.
Lanes halfSum8(Lanes a, Lanes b) { return sub8(average8(a, b), bitAnd(bitXor(a, b), all8(1))); }

template <bool kBlend>
void repairWith(const DeinterlaceLines &lines, const int32_t *const combing[3], int width, int32_t limit,
                uint32_t *out) {
  const Lanes limits = all32(limit);
  const Lanes color = all32(0x00FFFFFF);
  const auto step = [&](const uint32_t *a, const uint32_t *c, const uint32_t *b, int at, uint32_t *to) {
    const Lanes line = load(c);
    Lanes rebuilt = halfSum8(load(a), load(b));
    if (kBlend)
      rebuilt = halfSum8(rebuilt, line); // (a + b + 2 c) >> 2: the first truncation cannot show
    const Lanes middle = load(combing[1] + at);
    const Lanes sum = add32(add32(load(combing[0] + at), load(combing[2] + at)), add32(middle, middle));
    const Lanes combed = greater32(sum, limits);
    store(to, bitOr(bitAndNot(combed, line), bitAnd(combed, bitAnd(rebuilt, color))));
  };
  const DeinterlaceLines l = lines;
  int x = 0;
  for (; x + kPixelsAtOnce <= width; x += kPixelsAtOnce)
    step(l.above + x, l.at + x, l.below + x, x, out + x);
  if (const int rest = width - x; rest > 0) {
    uint32_t pixels[3][kPixelsAtOnce] = {};
    const size_t bytes = static_cast<size_t>(rest) * sizeof(uint32_t);
    __builtin_memcpy(pixels[0], l.above + x, bytes);
    __builtin_memcpy(pixels[1], l.at + x, bytes);
    __builtin_memcpy(pixels[2], l.below + x, bytes);
    step(pixels[0], pixels[1], pixels[2], x, pixels[1]);
    __builtin_memcpy(out + x, pixels[1], bytes);
  }
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
