#include "kernels/color/hue_lanes.h"
#include "kernels/color/luma_lanes.h"
#include "kernels/keying/universal_key.h"

namespace zol::ZOL_LEVEL {
namespace {

using Bytes = Vector<uint8_t, kLanes<U16xN>>;

constexpr int kFar = 4096;

/// a * b >> 12, of factors up to 4096.
I16xN scaled(I16xN a, I16xN b) { return as<I16xN>(mulHigh(as<U16xN>(a) << 3, as<U16xN>(b) << 1)); }

/// a * b >> shift, no more than 65535.
template <int shift> U16xN scaledSaturated(U16xN a, U16xN b) {
  const U16xN high = mulHigh(a, b);
  const U16xN product = high << (16 - shift) | a * b >> shift;
  return high >> shift != 0 ? splat<U16xN>(0xFFFF) : product;
}

/// 4096 part / 255.
I16xN ofByte(I16xN part) { return part * 16 + as<I16xN>(div255(as<U16xN>(part * 16))); }

/// 4096 part / whole, the whole the same everywhere. Floats are exact: a quotient of numbers up to 2^24 and
/// 2^12 that is not whole is further from the next one than rounding can take it.
I16xN ofWhole(I16xN part, int whole) {
  const auto half = [whole](I32xN parts) {
    return convert<I32xN>(convert<F32xN>(parts << 12) / static_cast<float>(whole));
  };
  return packI16(half(widenLow(part)), half(widenHigh(part)));
}

I16xN distance(I16xN a, I16xN b) { return max(a, b) - min(a, b); }

// ---- Key light ----

/// The share of key light, up to 4096.
I16xN lightShare(const RgbLanes &c, const UniversalKey &key) {
  const I16xN chromaBlue = c.blue * 128 - c.red * 43 - c.green * 85;
  const I16xN chromaRed = c.red * 128 - c.green * 107 - c.blue * 21;
  const auto low = interleaveLow(chromaBlue, chromaRed), high = interleaveHigh(chromaBlue, chromaRed);
  const auto pairs = [](int blue, int red) {
    return as<I16xN>(
        splat<U32xN>((static_cast<uint32_t>(red) << 16) | (static_cast<uint32_t>(blue) & 0xFFFF)));
  };
  const I16xN along = pairs(key.blue, key.red), across = pairs(-key.red, key.blue);
  const U16xN light = packU16(mulAddPairs(low, along) >> 14, mulAddPairs(high, along) >> 14);
  const auto away = [across](I16xN chroma) {
    const I32xN turned = mulAddPairs(chroma, across);
    return max(turned, -turned) >> 14;
  };
  const U16xN loss =
      scaledSaturated<8>(packU16(away(low), away(high)), splat<U16xN>(static_cast<uint16_t>(key.narrowing)));
  const U16xN share =
      scaledSaturated<12>(subSaturated(light, loss), splat<U16xN>(static_cast<uint16_t>(key.perChroma)));
  return as<I16xN>(share > kFar ? splat<U16xN>(kFar) : share);
}

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

I16xN chromaDistance(const RgbLanes &c, const UniversalKey &key) {
  auto share = as<U16xN>(lightShare(c, key));
  if (key.shadows != 0)
    share = addSaturated(share, scaledSaturated<12>(share, shadowGain(luma(c), key)));
  return kFar - as<I16xN>(share > kFar ? splat<U16xN>(kFar) : share);
}

// ---- Distances ----

I16xN hueDistance(const RgbLanes &c, int keyStep) {
  const Hues hues(c);
  const I16xN way = distance(wheelStep(hues), lanes(keyStep));
  const I16xN near = kFar - ofWhole(min(way, 1530 - way), 765);
  return kFar - as<I16xN>(mulHigh(as<U16xN>(near) << 3, as<U16xN>(min(hues.chroma, lanes(64))) << 7));
}

/// Pixels without alpha are black.
PixelPair loadShown(const _color_t *from, int count) {
  const auto shown = [](U32xN p) { return p >= 0x01000000 ? p : U32xN{}; };
  const PixelPair pixels = loadInTurn(from, count);
  return {shown(pixels.first), shown(pixels.second)};
}

/// The distance of the pixels of a vector from the key.
template <KeyMethod method> class Measure {
public:
  explicit Measure(const UniversalKey &key)
      : key_(key), color_{lanes(key.color.r), lanes(key.color.g), lanes(key.color.b)} {
    if constexpr (method == KeyMethod::hue)
      step_ = wheelStep(Hues(color_))[0];
  }

  [[nodiscard]] I16xN operator()(const PixelPair &pixels, const PixelPair &plate) const {
    const RgbLanes c = channelsOf(pixels);
    if constexpr (method == KeyMethod::chroma)
      return chromaDistance(c, key_);
    else if constexpr (method == KeyMethod::color)
      return ofWhole(
          distance(c.red, color_.red) + distance(c.green, color_.green) + distance(c.blue, color_.blue), 765);
    else if constexpr (method == KeyMethod::hue)
      return hueDistance(c, step_);
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
  const UniversalKey &key_;
  RgbLanes color_;
  int step_ = 0;
};

/// Bytes of distances.
U16xN rampOf(I16xN distance, const UniversalKey &key) {
  const I16xN part = min(max(distance - static_cast<int16_t>(key.first), lanes(0)), lanes(key.range));
  // 255 t / 4096, rounded; the greatest t would not fit, and the one below gives the same.
  const auto t = as<U16xN>(min(ofWhole(part, key.range), lanes(4095))) << 4;
  return mulHigh(t, splat<U16xN>(255)) + (t * 255 >> 15);
}

template <KeyMethod method>
void matteRow(const UniversalKey &key, const _color_t *pixels, const _color_t *plate, uint8_t *matte,
              int count) {
  const Measure<method> measure(key);
  const uint16_t inverts = key.inverts ? 255 : 0;
  forEachVector<U16xN>(count, [&](int i, int n) {
    const PixelPair under = method == KeyMethod::difference ? loadShown(plate + i, n) : PixelPair{};
    store(matte + i, convert<Bytes>(rampOf(measure(loadShown(pixels + i, n), under), key) ^ inverts), n);
  });
}

using MatteRow = void (*)(const UniversalKey &, const _color_t *, const _color_t *, uint8_t *, int);

template <int... methods> MatteRow rowOf(KeyMethod method, std::integer_sequence<int, methods...> /*all*/) {
  constexpr MatteRow kRows[] = {matteRow<static_cast<KeyMethod>(methods)>...};
  return kRows[static_cast<int>(method)];
}

// ---- Colours ----

RgbLanes withoutSpill(const RgbLanes &c, U16xN matte, const UniversalKey &key) {
  const I16xN light = scaled(lightShare(c, key), lanes(key.spill));
  if (!anySet(light > 0))
    return c;
  const I16xN rest = kFar - min(light, kFar - ofByte(as<I16xN>(matte)));
  const auto divisor = as<U16xN>(max(rest, lanes(1)));
  const F32xN low = reciprocal(widenLow(divisor)), high = reciprocal(widenHigh(divisor));
  const auto channel = [&](I16xN value, uint8_t lit) {
    const auto own = as<U16xN>(max(value - scaled(light, lanes(lit)), lanes(0)));
    return min(packI16(quotient(widenLow(own) << 12, low), quotient(widenHigh(own) << 12, high)), lanes(255));
  };
  return {channel(c.red, key.color.r), channel(c.green, key.color.g), channel(c.blue, key.color.b)};
}

} // namespace

void universalMatteRow(const UniversalKey &key, const _color_t *pixels, const _color_t *plate, uint8_t *matte,
                       int count) {
  rowOf(key.method, std::make_integer_sequence<int, kKeyMethods>())(key, pixels, plate, matte, count);
}

void universalColorRow(const UniversalKey &key, const _color_t *pixels, const uint8_t *matte, _color_t *out,
                       int count) {
  const bool timesAlpha = key.method != KeyMethod::alpha;
  forEachVector<U16xN>(count, [&](int i, int n) {
    const PixelPair in = loadInTurn(pixels + i, n);
    const auto own = convert<U16xN>(load<Bytes>(matte + i, n));
    RgbLanes c = channelsOf(in);
    if (key.spill != 0 && anySet(own != 0))
      c = withoutSpill(c, own, key);
    const U16xN alpha = timesAlpha ? div255(own * as<U16xN>(channelOf(in.first, in.second, 24)) + 127) : own;
    const auto shows = alpha != 0;
    c = {(c.red | as<I16xN>(alpha << 8)) & shows, c.green & shows, c.blue & shows};
    storeInTurn(out + i, {firstPixels(c), secondPixels(c)}, n);
  });
}

} // namespace zol::ZOL_LEVEL
