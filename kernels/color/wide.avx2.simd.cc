#include "kernels/color/wide.h"

#include "kernels/color/wide_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kPixels = kLanes<U32xN>;

/// A vector's pixels as two vectors of 16 bits a channel, the first two of every four and the others. The
/// block i of the first stands at 4 i, that of the second at 4 i + 2.
template <class Pixels> void loadWide(const Pixels *from, U16xN &low, U16xN &high) {
  const void *places[2][kBlocks];
  for (int i = 0; i < kBlocks; ++i) {
    places[0][i] = from + 4 * i;
    places[1][i] = from + 4 * i + 2;
  }
  low = loadBlocks<U16xN>(places[0]);
  high = loadBlocks<U16xN>(places[1]);
}
void storeWide(WidePixel *to, U16xN low, U16xN high) {
  void *places[2][kBlocks];
  for (int i = 0; i < kBlocks; ++i) {
    places[0][i] = to + 4 * i;
    places[1][i] = to + 4 * i + 2;
  }
  storeBlocks(places[0], low);
  storeBlocks(places[1], high);
}

U32xN bytesOfVector(U16xN low, U16xN high, const Rounding &rounding, int i, U32xN hidden) {
  const auto terms = convert<U32xN>(termsAt<Vector<uint16_t, kPixels>>(rounding, i));
  constexpr uint64_t kOpaque = uint64_t{kWideOne} << 48;
  const auto alphas = [](U16xN v) { return as<U64xN>(v) >> 48 << 48; };
  if (!allSet((alphas(low) == kOpaque) & (alphas(high) == kOpaque)))
    return bytesOf(channelsOf(low, high), convert<F32xN>(as<I32xN>(terms)), hidden);
  const U32xN twice = terms | terms << 16; // opaque colours are (C + t) / 255
  const auto channels = [](U16xN v, U32xN t) { return as<I16xN>(div255(addSaturated(v, as<U16xN>(t)))); };
  return as<U32xN>(
      packU8(channels(low, interleaveLow(twice, twice)), channels(high, interleaveHigh(twice, twice))));
}

} // namespace

void toWide(const _color_t *pixels, WidePixel *wide, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto bytes = as<U8xN>(load<U32xN>(pixels + i, n));
    WidePixel rest[kPixels];
    storeWide(n == kPixels ? wide + i : rest, wideOf(widenLow(bytes)), wideOf(widenHigh(bytes)));
    if (n != kPixels)
      __builtin_memcpy(wide + i, rest, static_cast<size_t>(n) * sizeof(WidePixel));
  });
}

void toBytes(const WidePixel *wide, const Rounding &rounding, const _color_t *hidden, _color_t *out,
             int count) {
  forEachVector<U32xN>(count, [=, &rounding](int i, int n) {
    WidePixel rest[kPixels] = {};
    if (n != kPixels)
      __builtin_memcpy(rest, wide + i, static_cast<size_t>(n) * sizeof(WidePixel));
    U16xN low, high;
    loadWide(n == kPixels ? wide + i : rest, low, high);
    const U32xN under = hidden != nullptr ? load<U32xN>(hidden + i, n) : U32xN{};
    store(out + i, bytesOfVector(low, high, rounding, i, under), n);
  });
}

void alphaToWide(const _color_t *pixels, uint16_t *wide, int count) {
  forEachVector<U16xN>(count, [=](int i, int n) {
    const int first = n < kPixels ? n : kPixels;
    const U32xN low = load<U32xN>(pixels + i, first) >> 24;
    const U32xN high = load<U32xN>(pixels + i + first, n - first) >> 24;
    store(wide + i, narrow(low, high) * 255, n);
  });
}

void wideToAlpha(const uint16_t *wide, const Rounding &rounding, uint8_t *alpha, int count) {
  forEachVector<U16xN>(count, [=, &rounding](int i, int n) {
    const U16xN bytes = div255(addSaturated(load<U16xN>(wide + i, n), termsAt<U16xN>(rounding, i)));
    const auto limited = min(as<I16xN>(bytes), splat<I16xN>(255));
    store(alpha + i, convert<Vector<uint8_t, kLanes<U16xN>>>(limited), n);
  });
}

} // namespace zol::ZOL_LEVEL
