#include "kernels/patterns/zone_rows.h"

#include "kernels/color/channel_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

/// 128 + 127 times the cosine, of phases whose turn is 65536.
U16xN grayOf(I16xN phase) {
  // A quarter of a turn is 16384 from here on, and so is 1.
  const I16xN twice = min(16384 - (phase ^ (phase >> 15)), splat<I16xN>(16383)) << 1;
  const I16xN square2 = mulHigh(twice, twice) << 1;
  const I16xN inner = mulHigh(splat<I16xN>(2 * 1177), square2) - 10520;
  const I16xN cosine = mulHigh(twice, mulHigh(inner << 1, square2) + 25728); // 8192 = 1
  return as<U16xN>(mulHigh((cosine + 32) << 1, splat<I16xN>(4 * 127)) + 128);
}

/// The phases of a vector's pixels, and of those so many vectors on.
struct Walk {
  Walk(const ZonePhases &phases, uint32_t first, uint32_t pixels) {
    const auto at = [&](uint32_t x) {
      const uint64_t pairs = uint64_t{x} * (uint64_t{x} - 1) / 2; // of 0 too
      return phases.first + x * phases.step + static_cast<uint32_t>(pairs) * phases.change;
    };
    for (uint32_t i = 0; i < kLanes<U32xN>; ++i) {
      phase[i] = at(first + i);
      step[i] = at(first + i + pixels) - phase[i];
    }
    change = splat<U32xN>(pixels * pixels * phases.change);
  }

  I32xN next() {
    const U32xN now = phase;
    phase += step;
    step += change;
    return as<I32xN>(now) >> 16;
  }

  U32xN phase, step, change;
};

} // namespace

void zoneRow(const ZonePhases &phases, _color_t *out, int count) {
  constexpr uint32_t kHalf = kLanes<U32xN>;
  Walk first(phases, 0, 2 * kHalf), second(phases, kHalf, 2 * kHalf);
  forEachVector<U16xN>(count, [&](int i, int n) {
    const U16xN gray = grayOf(packI16(first.next(), second.next()));
    const U16xN blueGreen = gray | gray << 8, redAlpha = gray | 0xFF00;
    storePair(out + i,
              {as<U32xN>(interleaveLow(blueGreen, redAlpha)), as<U32xN>(interleaveHigh(blueGreen, redAlpha))},
              n);
  });
}

} // namespace zol::ZOL_LEVEL
