#include "kernels/color/color_ramp.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kPixels = kLanes<U32xN>;

/// Two pixels of every four from `first` on. They are moved as doubles, the one kind of eight bytes that
/// every target moves in one go.
F64xN twoOfFour(const RampColor *ramp, const int32_t *places, int first) {
  F64xN colors;
  for (int i = 0; i < kLanes<F64xN>; ++i) {
    double color;
    __builtin_memcpy(&color, ramp + places[i / 2 * 4 + i % 2 + first], sizeof color);
    colors[i] = color;
  }
  return colors;
}

} // namespace

void rampRow(const RampColor *ramp, const int32_t *places, const RampRounding &rounding, _color_t *out,
             int count) {
  uint16_t terms[kDitherPeriod][4]; // of every channel
  for (int i = 0; i < kDitherPeriod; ++i)
    for (uint16_t &term : terms[i])
      term = rounding.terms[i];
  forEachVector<U32xN>(count, [&](int i, int n) {
    int32_t rest[kPixels] = {};
    if (n < kPixels)
      __builtin_memcpy(rest, places + i, static_cast<size_t>(n) * sizeof *places);
    const int32_t *const at = n < kPixels ? rest : places + i;
    const auto bytes = [&](int first) {
      const void *blocks[kBlocks];
      for (int b = 0; b < kBlocks; ++b)
        blocks[b] = terms[(i + 4 * b + first) % kDitherPeriod];
      return as<I16xN>((as<U16xN>(twoOfFour(ramp, at, first)) + loadBlocks<U16xN>(blocks)) >> 8);
    };
    store(out + i, as<U32xN>(packU8(bytes(0), bytes(2))), n);
  });
}

} // namespace zol::ZOL_LEVEL
