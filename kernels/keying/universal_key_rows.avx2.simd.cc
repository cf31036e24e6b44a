#include "kernels/color/hue_lanes.h"
#include "kernels/color/luma_lanes.h"
#include "kernels/keying/universal_key.h"

namespace zol::ZOL_LEVEL {
namespace {

using Bytes = Vector<uint8_t, kLanes<U16xN>>;

constexpr int kFar = 4096;

/// a * b >> 12, of factors up to 4096.
I16xN scaled(I16xN a, I16xN b) { return as<I16xN>(mulHigh(as<U16xN>(a) << 3, as<U16xN>(b) << 1)); }

/// 4096 part / 255.
I16xN ofByte(I16xN part) { return part * 16 + as<I16xN>(div255(as<U16xN>(part * 16))); }

/// 4096 part / whole, the whole the same everywhere. Floats are exact: a quotient of numbers up to 2^24 and
/// 2^12 that is not whole is further from the next one than rounding can take it.
class Whole {
public:
  explicit Whole(int whole) : whole_(splat<F32xN>(static_cast<float>(whole))) {}
  [[nodiscard]] I16xN share(I16xN part) const { return packI16(half(widenLow(part)), half(widenHigh(part))); }

private:
  [[nodiscard]] I32xN half(I32xN part) const { return convert<I32xN>(convert<F32xN>(part << 12) / whole_); }
  F32xN whole_;
};

I16xN distance(I16xN a, I16xN b) { return max(a, b) - min(a, b); }

// ---- Key light ----

U16xN unsignedLanes(int value) { return splat<U16xN>(static_cast<uint16_t>(value)); }

/// A sum of blue less green and red less green, each times a weight below 2^22. What a weight holds beyond a
/// signed number of 16 bits is multiplied apart.
class Weights {
public:
  Weights(int blue, int red) : high_(pairs(blue >> 7, red >> 7)), low_(pairs(blue & 127, red & 127)) {}
  [[nodiscard]] I32xN sum(I16xN differences) const {
    return (mulAddPairs(differences, high_) << 7) + mulAddPairs(differences, low_);
  }

private:
  static I16xN pairs(int blue, int red) {
    return as<I16xN>(splat<U32xN>(static_cast<uint32_t>(red) << 16 | (static_cast<uint32_t>(blue) & 0xFFFF)));
  }
  I16xN high_, low_;
};

/// Blue less green and red less green.
I16xN lessGreen(U32xN pixels) {
#if defined(__AVX2__)
  U8xN index;
  for (int i = 0; i < kVectorBytes; ++i)
    index[i] = static_cast<uint8_t>(i & 1 ? 0x80 : (i & 12) + 1);
  const auto green = as<I16xN>(shuffle(as<U8xN>(pixels), index));
#else
  const auto green = as<I16xN>((pixels >> 8 & 0xFF) | (pixels << 8 & 0xFF0000));
#endif
  return as<I16xN>(pixels & 0xFF00FF) - green;
}

/// Measures key light in colours. Of red r, green g and blue b chroma is 128 (b - g) - 43 (r - g) and
/// 128 (r - g) - 21 (b - g).
class Light {
public:
  explicit Light(const UniversalKey &key)
      : along_(128 * key.blue - 21 * key.red, 128 * key.red - 43 * key.blue),
        across_(-128 * key.red - 21 * key.blue, 128 * key.blue + 43 * key.red),
        narrowing_(unsignedLanes(key.narrowing)), perChroma_(unsignedLanes(key.perChroma)) {}

  /// Its share, up to 4096.
  [[nodiscard]] I16xN share(const PixelPair &pixels) const {
    const I16xN first = lessGreen(pixels.first), second = lessGreen(pixels.second);
    const U16xN light = packU16(along_.sum(first) >> 14, along_.sum(second) >> 14);
    const U16xN away = packU16(across(first), across(second));
    // 65280 of loss are more than any light.
    const auto lost = as<U16xN>(min(as<I16xN>(mulHigh(away, narrowing_)), lanes(255))) << 8;
    const U16xN left = subSaturated(light, lost | away * narrowing_ >> 8);
    const auto share = as<U16xN>(min(as<I16xN>(mulHigh(left, perChroma_)), lanes(256))) << 4;
    return min(as<I16xN>(share | left * perChroma_ >> 12), lanes(kFar));
  }

private:
  [[nodiscard]] I32xN across(I16xN differences) const {
    const I32xN sum = across_.sum(differences);
    return max(sum, -sum) >> 14;
  }

  Weights along_, across_;
  U16xN narrowing_, perChroma_;
};

/// By how much light counts more where luma y is below the key's; 4096 = 1.0, up to 61440.
U16xN shadowGain(I16xN y, const UniversalKey &key) {
  const int keyLuma = (54 * key.color.r + 183 * key.color.g + 19 * key.color.b) >> 8;
  const auto divisor = as<U16xN>(max(y, lanes(1)));
  const auto half = [&](U32xN divisors) {
    const I32xN ratio = quotient(splat<U32xN>(static_cast<uint32_t>(keyLuma) << 12), reciprocal(divisors));
    const auto gain = as<U32xN>(max(ratio - 4096, I32xN{})) * static_cast<uint32_t>(key.shadows) >> 12;
    return min(as<I32xN>(gain), splat<I32xN>(61440));
  };
  return packU16(half(widenLow(divisor)), half(widenHigh(divisor)));
}

// ---- Distances ----

/// Pixels without alpha are black.
PixelPair loadShown(const _color_t *from, int count) {
  const auto shown = [](U32xN p) { return p >> 24 == 0 ? U32xN{} : p; };
  const PixelPair pixels = loadInTurn(from, count);
  return {shown(pixels.first), shown(pixels.second)};
}

/// The distance of the pixels of a vector from the key.
template <KeyMethod method> class Measure {
public:
  explicit Measure(const UniversalKey &key)
      : key_(key), color_{lanes(key.color.r), lanes(key.color.g), lanes(key.color.b)}, light_(key) {}

  [[nodiscard]] I16xN operator()(const PixelPair &pixels, const PixelPair &plate) const {
    if constexpr (method == KeyMethod::chroma)
      return chromaDistance(pixels);
    const RgbLanes c = channelsOf(pixels);
    if constexpr (method == KeyMethod::color)
      return third_.share(distance(c.red, color_.red) + distance(c.green, color_.green) +
                          distance(c.blue, color_.blue));
    else if constexpr (method == KeyMethod::hue)
      return hueDistance(Hues(c));
    else if constexpr (method == KeyMethod::luma)
      return ofByte(distance(luma(c), luma(color_)));
    else if constexpr (method == KeyMethod::saturation)
      return ofByte(distance(greatest(c) - least(c), greatest(color_) - least(color_)));
    else if constexpr (method == KeyMethod::difference) {
      const RgbLanes p = channelsOf(plate);
      return ofByte(greatest({distance(c.red, p.red), distance(c.green, p.green), distance(c.blue, p.blue)}));
    } else
      return ofByte(channelOf(pixels.first, pixels.second, 24));
  }

private:
  [[nodiscard]] I16xN chromaDistance(const PixelPair &pixels) const {
    const I16xN share = light_.share(pixels);
    if (key_.shadows == 0)
      return kFar - share;
    const auto light = as<U16xN>(share);
    const U16xN gain = shadowGain(luma(channelsOf(pixels)), key_);
    const U16xN more = mulHigh(light, gain) << 4 | light * gain >> 12;
    return max(kFar - share - as<I16xN>(more > kFar ? unsignedLanes(kFar) : more), lanes(0));
  }
  [[nodiscard]] I16xN hueDistance(const Hues &hues) const {
    const I16xN way = distance(wheelStep(hues), wheelStep(Hues(color_)));
    const I16xN near = kFar - third_.share(min(way, 1530 - way));
    return kFar - as<I16xN>(mulHigh(as<U16xN>(near) << 3, as<U16xN>(min(hues.chroma, lanes(64))) << 7));
  }

  UniversalKey key_;
  RgbLanes color_;
  Light light_;
  Whole third_{765};
};

/// Bytes of distances.
class Ramp {
public:
  explicit Ramp(const UniversalKey &key)
      : first_(lanes(key.first)), range_(lanes(key.range)), share_(key.range),
        inverts_(unsignedLanes(key.inverts ? 255 : 0)) {}

  [[nodiscard]] U16xN operator()(I16xN distance) const {
    const I16xN part = min(max(distance - first_, lanes(0)), range_);
    if (const auto isFull = part == range_; allSet(isFull | (part == 0))) // as most pixels are
      return (as<U16xN>(isFull) & 255) ^ inverts_;
    // 255 t / 4096, rounded; the greatest t would not fit, and the one below gives the same.
    const auto t = as<U16xN>(min(share_.share(part), lanes(4095))) << 4;
    return (mulHigh(t, unsignedLanes(255)) + (t * 255 >> 15)) ^ inverts_;
  }

private:
  I16xN first_, range_;
  Whole share_;
  U16xN inverts_;
};

template <KeyMethod method>
void matteRow(const UniversalKey &key, const _color_t *pixels, const _color_t *plate, uint8_t *matte,
              int count) {
  forEachVector<U16xN>(count, [=, measure = Measure<method>(key), ramp = Ramp(key)](int i, int n) {
    const PixelPair under = method == KeyMethod::difference ? loadShown(plate + i, n) : PixelPair{};
    store(matte + i, convert<Bytes>(ramp(measure(loadShown(pixels + i, n), under))), n);
  });
}

using MatteRow = void (*)(const UniversalKey &, const _color_t *, const _color_t *, uint8_t *, int);

template <int... methods> MatteRow rowOf(KeyMethod method, std::integer_sequence<int, methods...> /*all*/) {
  constexpr MatteRow kRows[] = {matteRow<static_cast<KeyMethod>(methods)>...};
  return kRows[static_cast<int>(method)];
}

// ---- Colours ----

/// Takes key light out of colours.
class Suppressor {
public:
  explicit Suppressor(const UniversalKey &key)
      : light_(key),
        spill_(lanes(key.spill)), color_{lanes(key.color.r), lanes(key.color.g), lanes(key.color.b)} {}

  [[nodiscard]] RgbLanes operator()(const PixelPair &pixels, U16xN matte) const {
    const RgbLanes c = channelsOf(pixels);
    const I16xN light = scaled(light_.share(pixels), spill_);
    if (!anySet(light > 0))
      return c;
    const I16xN rest = kFar - min(light, kFar - ofByte(as<I16xN>(matte)));
    const auto divisor = as<U16xN>(max(rest, lanes(1)));
    const F32xN low = reciprocal(widenLow(divisor)), high = reciprocal(widenHigh(divisor));
    const auto channel = [=](I16xN value, I16xN lit) {
      const auto own = as<U16xN>(max(value - scaled(light, lit), lanes(0)));
      return min(packI16(quotient(widenLow(own) << 12, low), quotient(widenHigh(own) << 12, high)),
                 lanes(255));
    };
    return {channel(c.red, color_.red), channel(c.green, color_.green), channel(c.blue, color_.blue)};
  }

private:
  Light light_;
  I16xN spill_;
  RgbLanes color_;
};

} // namespace

void universalMatteRow(const UniversalKey &key, const _color_t *pixels, const _color_t *plate, uint8_t *matte,
                       int count) {
  rowOf(key.method, std::make_integer_sequence<int, kKeyMethods>())(key, pixels, plate, matte, count);
}

void universalColorRow(const UniversalKey &key, const _color_t *pixels, const uint8_t *matte, _color_t *out,
                       int count) {
  const bool timesAlpha = key.method != KeyMethod::alpha, suppresses = key.spill != 0;
  forEachVector<U16xN>(count, [=, suppress = Suppressor(key)](int i, int n) {
    const auto own = convert<U16xN>(load<Bytes>(matte + i, n));
    if (!anySet(own != 0)) {
      storeInTurn(out + i, PixelPair{}, n);
      return;
    }
    const PixelPair in = loadInTurn(pixels + i, n);
    const RgbLanes c = suppresses ? suppress(in, own) : channelsOf(in);
    const U16xN alpha = timesAlpha ? div255(own * as<U16xN>(channelOf(in.first, in.second, 24)) + 127) : own;
    const auto shows = alpha != 0;
    const RgbLanes shown = {(c.red | as<I16xN>(alpha << 8)) & shows, c.green & shows, c.blue & shows};
    storeInTurn(out + i, {firstPixels(shown), secondPixels(shown)}, n);
  });
}

} // namespace zol::ZOL_LEVEL
