#include "kernels/motion/frame_average.h"

#include "kernels/color/wide_lanes.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr uint32_t kOpaque = 0xFF000000;

/// Sums of the weighted channels of a vector of pixels, exact: at most 256 * 255.
struct ChannelSums {
  U16xN low{}, high{};

  void add(U32xN pixels, uint16_t weight) {
    low += widenLow(as<U8xN>(pixels)) * weight;
    high += widenHigh(as<U8xN>(pixels)) * weight;
  }
  /// Of opaque pixels.
  [[nodiscard]] U32xN average() const {
    return as<U32xN>(packU8(as<I16xN>((low + 128) >> 8), as<I16xN>((high + 128) >> 8)));
  }
};

F32xN channel(U32xN pixels, int shift) { return convert<F32xN>(as<I32xN>(pixels >> shift & 0xFF)); }

/// A pixel of alpha (a + 128) >> 8 and colours (c + a / 2) / a. Floats are exact here: dividends are integers
/// below 2^24 and a quotient, if it is not whole, is further from the next integer than rounding can take it.
U32xN averaged(F32xN b, F32xN g, F32xN r, F32xN a, U32xN hidden) {
  const auto whole = [](F32xN v) { return as<U32xN>(convert<I32xN>(v)); };
  const F32xN half = convert<F32xN>(convert<I32xN>(a * 0.5F)), divisor = max(a, splat<F32xN>(1));
  const auto color = [=](F32xN c) { return whole(min((c + half) / divisor, splat<F32xN>(255))); };
  const U32xN alpha = (whole(a) + 128) >> 8, colors = color(b) | color(g) << 8 | color(r) << 16;
  return alpha << 24 | (alpha == 0 ? hidden & ~kOpaque : colors);
}

} // namespace

void averageRows(const _color_t *const *rows, const uint16_t *weights, int rowCount, _color_t *out,
                 int width) {
  forEachVector<U32xN>(width, [=](int i, int n) {
    U32xN all = splat<U32xN>(~0U);
    ChannelSums sums;
    for (int row = 0; row < rowCount; ++row) {
      const auto pixels = load<U32xN>(rows[row] + i, n);
      all &= pixels;
      sums.add(pixels, weights[row]);
    }
    if (n == kLanes<U32xN> && allSet(all >= kOpaque))
      return store(out + i, sums.average());
    F32xN b{}, g{}, r{}, a{};
    for (int row = 0; row < rowCount; ++row) {
      const auto pixels = load<U32xN>(rows[row] + i, n);
      const F32xN weight = channel(pixels, 24) * static_cast<float>(weights[row]);
      b += channel(pixels, 0) * weight;
      g += channel(pixels, 8) * weight;
      r += channel(pixels, 16) * weight;
      a += weight;
    }
    store(out + i, averaged(b, g, r, a, load<U32xN>(rows[0] + i, n)), n);
  });
}

void premultiply(const _color_t *pixels, _color_t *out, int width) {
  forEachVector<U32xN>(width, [=](int i, int n) {
    const auto bytes = as<U8xN>(load<U32xN>(pixels + i, n));
    const auto multiplied = [](U16xN v) { return as<I16xN>(div255(wideOf(v) + 127)); };
    store(out + i, as<U32xN>(packU8(multiplied(widenLow(bytes)), multiplied(widenHigh(bytes)))), n);
  });
}

void addWeighted(const _color_t *row, uint16_t weight, WidePixel *sums, int width) {
  const auto *bytes = &row->b;
  uint16_t *lanes = &sums->b;
  forEachVector<U16xN>(4 * width, [=](int i, int n) {
    const auto channels = convert<U16xN>(load<Vector<uint8_t, kLanes<U16xN>>>(bytes + i, n));
    store(lanes + i, load<U16xN>(lanes + i, n) + channels * weight, n);
  });
}

void averageOfSums(const WidePixel *sums, const _color_t *hidden, _color_t *out, int width) {
  forEachVector<U32xN>(width, [=](int i, int n) {
    WidePixel rest[kPixels] = {};
    if (n < kPixels)
      __builtin_memcpy(rest, sums + i, static_cast<size_t>(n) * sizeof *rest);
    ChannelSums pixels;
    loadWide(n < kPixels ? rest : sums + i, pixels.low, pixels.high);
    constexpr uint64_t kWhole = uint64_t{256 * 255} << 48;
    const auto alphas = [](U16xN v) { return as<U64xN>(v) >> 48 << 48; };
    if (allSet((alphas(pixels.low) == kWhole) & (alphas(pixels.high) == kWhole)))
      return store(out + i, pixels.average(), n);
    const WideChannels v = channelsOf(pixels.low, pixels.high);
    store(out + i, averaged(v.b * 255.0F, v.g * 255.0F, v.r * 255.0F, v.a, load<U32xN>(hidden + i, n)), n);
  });
}

} // namespace zol::ZOL_LEVEL
