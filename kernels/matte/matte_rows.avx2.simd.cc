#include "kernels/matte/matte_rows.h"

#include "kernels/color/luma_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

using Bytes = Vector<uint8_t, kLanes<U16xN>>;

constexpr int kPixels = kLanes<U8xN>;

/// Bytes of kPixels pixels, of a quarter of each block from one vector of pixels.
template <class Value> U8xN bytesOf(const _color_t *pixels, Value value) {
  U32xN quarter[4];
  for (int q = 0; q < 4; ++q) {
    const void *blocks[kBlocks];
    for (int i = 0; i < kBlocks; ++i)
      blocks[i] = pixels + 16 * i + 4 * q;
    quarter[q] = loadBlocks<U32xN>(blocks);
  }
  return packU8(as<I16xN>(value(quarter[0], quarter[1])), as<I16xN>(value(quarter[2], quarter[3])));
}

template <class Value> void fill(const _color_t *pixels, uint8_t *matte, int count, Value value) {
  forEachVector<U8xN>(count, [=](int i, int n) {
    _color_t rest[kPixels] = {};
    if (n < kPixels)
      __builtin_memcpy(rest, pixels + i, static_cast<size_t>(n) * sizeof *pixels);
    store(matte + i, bytesOf(n < kPixels ? rest : pixels + i, value), n);
  });
}

U16xN channel(U32xN first, U32xN second, int shift) { return as<U16xN>(channelOf(first, second, shift)); }

} // namespace

void matteRow(const _color_t *pixels, MatteSource source, uint8_t *matte, int count) {
  const auto timesAlpha = [=](int shift) {
    fill(pixels, matte, count,
         [=](U32xN a, U32xN b) { return div255(channel(a, b, shift) * channel(a, b, 24)); });
  };
  switch (source) {
  case MatteSource::alpha:
    return fill(pixels, matte, count, [](U32xN a, U32xN b) { return channel(a, b, 24); });
  case MatteSource::luma:
    return fill(pixels, matte, count, [](U32xN a, U32xN b) {
      return div255(as<U16xN>(luma(channelsOf(a, b))) * channel(a, b, 24));
    });
  case MatteSource::red: return timesAlpha(16);
  case MatteSource::green: return timesAlpha(8);
  case MatteSource::blue: return timesAlpha(0);
  case MatteSource::opaque: __builtin_memset(matte, 255, static_cast<size_t>(count)); return;
  }
}

void lookUpRow(const uint8_t (&levels)[256], uint8_t *matte, int count) {
#if defined(__AVX2__)
  // A block holds the levels of 16 values. An index into it, the value less the block's first one, is
  // negative before it; behind it the block still answers, so that the next one answers for the difference.
  // Signed saturation keeps the other half of all values negative.
  U8xN blocks[16];
  for (int k = 0; k < 16; ++k) {
    const void *places[kBlocks];
    for (const void *&place : places)
      place = levels + 16 * k;
    blocks[k] = loadBlocks<U8xN>(places);
  }
  for (int k = 15; k > 0; --k)
    if (k != 8)
      blocks[k] ^= blocks[k - 1];
  forEachVector<U8xN>(count, [&](int i, int n) {
    const auto lower = load<U8xN>(matte + i, n);
    const U8xN upper = lower ^ 0x80;
    U8xN found{};
    for (int k = 0; k < 8; ++k) {
      const auto first = splat<I8xN>(static_cast<int8_t>(16 * k));
      found ^= shuffle(blocks[k], as<U8xN>(subSaturated(as<I8xN>(lower), first)));
      found ^= shuffle(blocks[k + 8], as<U8xN>(subSaturated(as<I8xN>(upper), first)));
    }
    store(matte + i, found, n);
  });
#else
  for (int i = 0; i < count; ++i)
    matte[i] = levels[matte[i]];
#endif
}

void invertRow(uint8_t *matte, int count) {
  forEachVector<U8xN>(count, [=](int i, int n) { store(matte + i, ~load<U8xN>(matte + i, n), n); });
}

void maskRow(const _color_t *mask, uint8_t *matte, int count) {
  forEachVector<U16xN>(count, [=](int i, int n) {
    const PixelPair pixels = loadInTurn(mask + i, n);
    const U16xN product =
        convert<U16xN>(load<Bytes>(matte + i, n)) * channel(pixels.first, pixels.second, 24);
    store(matte + i, convert<Bytes>(div255(product + 127)), n);
  });
}

void fadeRow(uint8_t *matte, int share, int count) {
  forEachVector<U16xN>(count, [=](int i, int n) {
    const auto values = convert<U16xN>(load<Bytes>(matte + i, n)) << 4; // at most 4080 * 4096 >> 16
    store(matte + i, convert<Bytes>(mulHigh(values, splat<U16xN>(static_cast<uint16_t>(share)))), n);
  });
}

void widenRow(const uint8_t *matte, uint16_t *wide, int count) {
  forEachVector<U16xN>(
      count, [=](int i, int n) { store(wide + i, convert<U16xN>(load<Bytes>(matte + i, n)) * 255, n); });
}

void amplifyRow(const uint16_t *wide, int gain, uint8_t *matte, int count) {
  constexpr int kOne = 65025;
  const auto amplified = [gain](U32xN v) {
    return min(as<I32xN>(v * static_cast<uint32_t>(gain) >> 8), splat<I32xN>(kOne));
  };
  forEachVector<U16xN>(count, [=](int i, int n) {
    const auto values = load<U16xN>(wide + i, n);
    const U16xN sums = packU16(amplified(widenLow(values)), amplified(widenHigh(values))) + 127;
    store(matte + i, convert<Bytes>(div255(sums)), n);
  });
}

void greyRow(const uint8_t *matte, _color_t *pixels, int count) {
  using Quarter = Vector<uint8_t, kLanes<U32xN>>;
  forEachVector<U32xN>(count, [=](int i, int n) {
    store(pixels + i, convert<U32xN>(load<Quarter>(matte + i, n)) * 0x10101 | 0xFF000000, n);
  });
}

} // namespace zol::ZOL_LEVEL
