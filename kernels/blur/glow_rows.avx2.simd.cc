#include "kernels/blur/glow_rows.h"

#include "kernels/color/wide_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr uint64_t kAlphaLane = 0xFFFF000000000000;

/// One value a pixel in each of its four channels, laid out like the channels of a vector of pixels.
struct Spread {
  U16xN low, high;
  explicit Spread(U32xN values) {
    const U32xN twice = values | values << 16;
    low = as<U16xN>(interleaveLow(twice, twice));
    high = as<U16xN>(interleaveHigh(twice, twice));
  }
};

// ---- Light ----

U32xN lumaOf(U32xN pixels) {
  const auto blueRed = as<I16xN>(pixels & 0x00FF00FF), green = as<I16xN>(pixels >> 8 & 0xFF);
  const I32xN sum = mulAddPairs(blueRed, as<I16xN>(splat<U32xN>(19 | 54 << 16))) + as<I32xN>(green * 183);
  return as<U32xN>(sum) >> 8;
}

/// Values times a share of 4096, or all of them.
struct Share {
  Spread times16, all;
  explicit Share(U32xN share) : times16(share << 4 & 0xFFFF), all(as<U32xN>(share == 4096)) {}
  [[nodiscard]] U16xN low(U16xN v) const { return select(all.low, v, mulHigh(v, times16.low)); }
  [[nodiscard]] U16xN high(U16xN v) const { return select(all.high, v, mulHigh(v, times16.high)); }
};

/// How much of each pixel glows. Half of one more keeps quotients off the next.
U32xN shareOf(U32xN lumas, int threshold) {
  const I32xN above = max(as<I32xN>(lumas) - threshold, I32xN{});
  const float whole = 1.0F / static_cast<float>(threshold < 255 ? 255 - threshold : 1);
  return as<U32xN>(convert<I32xN>((convert<F32xN>(above * 4096) + 0.5F) * whole));
}

/// Light moved towards y color / 255; its alpha stays. Floats are exact: y times a colour is below 2^24, and
/// a quotient that is not whole is further from the next integer than rounding can take it.
U16xN tinted(U16xN light, U16xN y, U16xN color, int tint) {
  const auto moved = [tint](U32xN from, U16xN product) {
    const I32xN to = convert<I32xN>(convert<F32xN>(as<I32xN>(product)) / 255.0F);
    return as<I32xN>(from) + ((to - as<I32xN>(from)) * tint >> 12) - 32768;
  };
  const U16xN product = y * color, above = mulHigh(y, color);
  const I32xN low = moved(widenLow(light), interleaveLow(product, above));
  const I32xN high = moved(widenHigh(light), interleaveHigh(product, above));
  return select(as<U16xN>(splat<U64xN>(kAlphaLane)), light, as<U16xN>(packI16(low, high)) ^ 0x8000);
}

// ---- The pyramid: averages that round as the wide forms do ----

/// (a + 3 b + 3 c + d + 4) >> 3.
U16xN halved(U16xN a, U16xN b, U16xN c, U16xN d) {
  const U16xN oddInner = (b ^ c) & 1, oddOuter = (a ^ d) & 1;
  const U16xN inner = averageUp(b, c) - oddInner, outer = averageUp(a, d) - oddOuter;
  return averageUp(inner, averageDown(inner, outer + oddInner + (oddInner & oddOuter)));
}

/// (3 near + far + 2) >> 2.
U16xN doubled(U16xN near, U16xN far) { return averageUp(near, averageDown(near, far)); }

/// Two pixels from every fourth on, a block each.
U16xN everyFourth(const WidePixel *from) {
  const void *places[kBlocks];
  for (int i = 0; i < kBlocks; ++i)
    places[i] = from + 4 * i;
  return loadBlocks<U16xN>(places);
}

/// The first or the second pixels of a's and b's blocks in turn.
U16xN firsts(U16xN a, U16xN b) { return as<U16xN>(interleaveLow(as<U64xN>(a), as<U64xN>(b))); }
U16xN seconds(U16xN a, U16xN b) { return as<U16xN>(interleaveHigh(as<U64xN>(a), as<U64xN>(b))); }

// ---- The glow over the picture ----

/// a b / 65025, rounded down. 2^16 is 65025 + 511: the quotient is the product's upper half and that of
/// 511 such halves and the lower half, which is below 2^25, and once more likewise.
U16xN timesWide(U16xN a, U16xN b) {
  const auto quotient = [](U32xN product) {
    const U32xN first = product >> 16, rest = (first << 9) - first + (product & 0xFFFF);
    const U32xN second = rest >> 16, last = (second << 9) - second + (rest & 0xFFFF);
    const auto third = convert<I32xN>((convert<F32xN>(as<I32xN>(last)) + 0.5F) * (1.0F / kWideOne));
    return as<I32xN>(first + second) + third - 32768;
  };
  const U16xN low = a * b, high = mulHigh(a, b);
  return as<U16xN>(packI16(quotient(as<U32xN>(interleaveLow(low, high))),
                           quotient(as<U32xN>(interleaveHigh(low, high))))) ^
         0x8000;
}

/// bytes b / 255, rounded down; 2^16 is 255 times 257 and 1.
U16xN timesBytes(U16xN bytes, U16xN b) {
  const U16xN low = bytes * b, high = mulHigh(bytes, b), lowPart = div255(low);
  return (high << 8) + high + lowPart + div255(high + low - lowPart * 255);
}

U16xN least(U16xN a, U16xN b) { return a - subSaturated(a, b); }

/// values times intensity >> 12, limited to 65025.
U16xN intensified(U16xN values, int intensity) {
  if (intensity < 4096)
    return mulHigh(values, splat<U16xN>(static_cast<uint16_t>(intensity << 4)));
  const auto times = [intensity](U32xN v) {
    const U32xN product = v * static_cast<uint32_t>(intensity) >> 12;
    return min(as<I32xN>(product), splat<I32xN>(kWideOne)) - 32768;
  };
  return as<U16xN>(packI16(times(widenLow(values)), times(widenHigh(values)))) ^ 0x8000;
}

/// Of pixels whose bytes stand in 16 bits each; `opaque` where all are.
U16xN laid(U16xN glow, U16xN bytes, bool opaque, GlowMode mode) {
  const U16xN pixels = wideOf(bytes);
  const U16xN screen = glow + (pixels - (opaque ? timesBytes(bytes, glow) : timesWide(pixels, glow)));
  if (mode == GlowMode::screen)
    return screen;
  const U16xN alphas = alphaOfEach(mode == GlowMode::add ? screen : pixels);
  const U16xN colors = mode == GlowMode::add ? least(addSaturated(pixels, glow), alphas)
                                             : pixels + timesWide(glow, splat<U16xN>(kWideOne) - alphas);
  return select(as<U16xN>(splat<U64xN>(kAlphaLane)), screen, colors);
}

} // namespace

void lightRow(const _color_t *pixels, const GlowSource &source, WidePixel *out, int width) {
  const uint64_t color = uint64_t{source.color.r} << 32 | uint64_t{source.color.g} << 16 | source.color.b;
  const auto colors = as<U16xN>(splat<U64xN>(color));
  forEachVector<U32xN>(width, [=](int i, int n) {
    const auto in = load<U32xN>(pixels + i, n);
    const U32xN lumas = lumaOf(in);
    const Share share(source.outline ? splat<U32xN>(4096) : shareOf(lumas, source.threshold));
    U16xN low = share.low(wideOf(widenLow(as<U8xN>(in)))), high = share.high(wideOf(widenHigh(as<U8xN>(in))));
    if (source.tint != 0) {
      const Spread y((source.outline ? splat<U32xN>(255) : lumas) * (in >> 24));
      low = tinted(low, share.low(y.low), colors, source.tint);
      high = tinted(high, share.high(y.high), colors, source.tint);
    }
    storeWide(out + i, low, high);
  });
}

void halveColumns(const WidePixel *a, const WidePixel *b, const WidePixel *c, const WidePixel *d,
                  WidePixel *out, int width) {
  forEachVector<U16xN>(4 * width, [=](int lane, int n) {
    const auto at = [=](const WidePixel *row) { return load<U16xN>(&row->b + lane, n); };
    store(&out->b + lane, halved(at(a), at(b), at(c), at(d)), n);
  });
}

void halveRow(const WidePixel *in, WidePixel *out, int outWidth) {
  constexpr int kAtOnce = 2 * kBlocks;
  for (int i = 0; i < outWidth; i += kAtOnce) {
    const auto before = everyFourth(in + 2 * i - 1), middle = everyFourth(in + 2 * i + 1),
               behind = everyFourth(in + 2 * i + 3);
    store(out + i, halved(firsts(before, middle), seconds(before, middle), firsts(middle, behind),
                          seconds(middle, behind)));
  }
}

void doubleColumns(const WidePixel *near, const WidePixel *far, WidePixel *out, int width) {
  forEachVector<U16xN>(4 * width, [=](int lane, int n) {
    store(&out->b + lane, doubled(load<U16xN>(&near->b + lane, n), load<U16xN>(&far->b + lane, n)), n);
  });
}

void doubleRow(const WidePixel *in, WidePixel *out, int inWidth) {
  constexpr int kAtOnce = 2 * kBlocks;
  for (int i = 0; i < inWidth; i += kAtOnce) {
    const auto at = [=](int offset) { return load<U16xN>(in + i + offset); };
    const U16xN even = doubled(at(0), at(-1)), odd = doubled(at(0), at(1));
    storeWide(out + 2 * i, firsts(even, odd), seconds(even, odd));
  }
}

void mixWide(WidePixel *row, const WidePixel *other, int s, int width) {
  const auto weights = as<I16xN>(splat<U32xN>(static_cast<uint32_t>((4096 - s) | s << 16)));
  forEachVector<U16xN>(4 * width, [=](int lane, int n) {
    const auto centred = [=](const WidePixel *from) {
      return as<I16xN>(load<U16xN>(&from->b + lane, n) ^ 0x8000);
    };
    const I16xN a = centred(row), b = centred(other);
    const I32xN low = (mulAddPairs(interleaveLow(a, b), weights) + 2048) >> 12;
    const I32xN high = (mulAddPairs(interleaveHigh(a, b), weights) + 2048) >> 12;
    store(&row->b + lane, as<U16xN>(packI16(low, high)) ^ 0x8000, n);
  });
}

void layGlow(const WidePixel *glow, const GlowLook &look, const _color_t *pixels, WidePixel *out, int width) {
  forEachVector<U32xN>(width, [=](int i, int n) {
    const U32xN in = look.only ? U32xN{} : load<U32xN>(pixels + i, n);
    const bool opaque = allSet(in >= 0xFF000000);
    U16xN low, high;
    loadWide(glow + i, low, high);
    storeWide(out + i, laid(intensified(low, look.intensity), widenLow(as<U8xN>(in)), opaque, look.mode),
              laid(intensified(high, look.intensity), widenHigh(as<U8xN>(in)), opaque, look.mode));
  });
}

} // namespace zol::ZOL_LEVEL
