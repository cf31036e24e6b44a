#include "kernels/color/recolor_rows.h"

#include "kernels/color/hue_lanes.h"
#include "kernels/color/luma_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

template <class Change> RgbLanes eachChannel(const RgbLanes &c, Change change) {
  return {change(c.red), change(c.green), change(c.blue)};
}

/// a * b >> 12, of a within +-2047.
I16xN scaled(I16xN a, I16xN b) { return mulHigh(a << 4, b); }

/// from + ((to - from) * weight >> 12).
RgbLanes towards(const RgbLanes &from, const RgbLanes &to, I16xN weight) {
  return {from.red + scaled(to.red - from.red, weight), from.green + scaled(to.green - from.green, weight),
          from.blue + scaled(to.blue - from.blue, weight)};
}

/// How near a step of the wheel is to a channel's middle: 255 within a sector, 0 from two on.
I16xN nearness(I16xN step, int middle) {
  const I16xN away = step - static_cast<int16_t>(middle);
  return min(max(510 - max(away, -away), lanes(0)), lanes(255));
}

RgbLanes turned(const Hues &h, int turn) {
  I16xN step = wheelStep(h) + static_cast<int16_t>(turn);
  step = step >= 1530 ? step - 1530 : step;
  const auto channel = [&h](I16xN wheel) {
    return h.low + as<I16xN>(div255(as<U16xN>(wheel) * as<U16xN>(h.chroma)));
  };
  return {channel(255 - nearness(step, 765)), channel(nearness(step, 510)), channel(nearness(step, 1020))};
}

/// How much colours can grow, 4096 = 1.0, until `reach` fills `room`; no less than any factor where there is
/// nothing to grow.
I16xN growth(I16xN room, I16xN reach) {
  const U16xN divisor = as<U16xN>(max(reach, lanes(1)));
  const auto half = [](U32xN rooms, U32xN reaches) { return quotient(rooms << 12, reciprocal(reaches)); };
  const I16xN most = packI16(half(widenLow(as<U16xN>(room)), widenLow(divisor)),
                             half(widenHigh(as<U16xN>(room)), widenHigh(divisor)));
  return reach == 0 ? lanes(INT16_MAX) : most;
}

RgbLanes saturated(const RgbLanes &c, int saturation) {
  const I16xN y = luma(c);
  I16xN factor = lanes(Recoloring::kOne + (saturation > 0 ? 3 : 1) * saturation);
  if (saturation > 0)
    factor = min(factor, min(growth(255 - y, greatest(c) - y), growth(y, y - least(c))));
  return eachChannel(c, [&](I16xN v) { return y + scaled(v - y, factor); });
}

RgbLanes lightened(const RgbLanes &c, int lightness) {
  if (lightness > 0)
    return eachChannel(c, [&](I16xN v) { return v + scaled(255 - v, lanes(lightness)); });
  return eachChannel(c, [&](I16xN v) { return scaled(v, lanes(Recoloring::kOne + lightness)); });
}

/// The hue of rgbToHls.
I16xN hlsHue(const Hues &h) {
  const auto way = as<I16xN>(div255(h.byChroma.divide(h.beyondLow) * 42));
  const auto redLow = h.color.red == h.low, greenLow = h.color.green == h.low;
  const auto redHigh = h.color.red == h.high, greenHigh = h.color.green == h.high;
  const I16xN hue = redLow     ? (greenHigh ? 85 + way : 170 - way)
                    : greenLow ? (redHigh ? 255 - way : 170 + way)
                               : (redHigh ? way : 85 - way);
  return h.chroma == 0 ? lanes(0) : hue;
}

/// How much a colour changes, 4096 = 1.0.
I16xN share(const Hues &h, const Recoloring &how) {
  const I16xN around = hlsHue(h) - static_cast<int16_t>(how.hue);
  const I16xN distance = max(around, -around);
  const I16xN nearest = distance > 127 ? 255 - distance : distance;
  const I16xN inside =
      min(max(static_cast<int16_t>(how.range + how.fading) - (nearest << 4), lanes(0)), lanes(how.fading));
  const I16xN chroma = min(h.chroma, lanes(how.fullChroma));
  const auto half = [&how](I32xN insides, I32xN chromas) {
    // Exact: a quotient of two whole numbers below 2^24 that is not whole is further from the next one than
    // rounding can take it.
    I32xN k = convert<I32xN>(convert<F32xN>(insides << 12) / static_cast<float>(how.fading));
    if (how.fullChroma > 0)
      k = convert<I32xN>(convert<F32xN>(k) * convert<F32xN>(chromas) / static_cast<float>(how.fullChroma));
    return k;
  };
  return packI16(half(widenLow(inside), widenLow(chroma)), half(widenHigh(inside), widenHigh(chroma)));
}

// ---- A stretch of a row, step after step ----

/// The channels of so many pixels stay in the nearest cache. What lies behind the last pixel is any colour.
constexpr int kStretch = 256;
struct Stretch {
  int16_t red[kStretch], green[kStretch], blue[kStretch];

  [[nodiscard]] RgbLanes at(int i) const {
    return {load<I16xN>(red + i), load<I16xN>(green + i), load<I16xN>(blue + i)};
  }
  void put(int i, const RgbLanes &c) {
    store(red + i, c.red);
    store(green + i, c.green);
    store(blue + i, c.blue);
  }
};

/// Puts color(i) in every place.
template <class Color> void fill(Stretch &stretch, int count, Color color) {
  for (int i = 0; i < count; i += kLanes<I16xN>)
    stretch.put(i, color(i));
}

void tint(Stretch &c, int count, const Recoloring &how) {
  constexpr int kHalf = kLanes<U32xN>;
  uint32_t tints[kStretch]; // by luma
  for (int i = 0; i < count; i += kLanes<I16xN>) {
    const auto y = as<U16xN>(luma(c.at(i)));
    store(tints + i, widenLow(y));
    store(tints + i + kHalf, widenHigh(y));
  }
  for (int i = 0; i < count; ++i)
    tints[i] = how.tint[tints[i]];
  fill(c, count, [&, amount = lanes(how.tintAmount)](int i) {
    return towards(c.at(i), channelsOf(load<U32xN>(tints + i), load<U32xN>(tints + i + kHalf)), amount);
  });
}

void recolor(const Stretch &in, Stretch &c, int count, const Recoloring &how) {
  if (how.turn != 0)
    fill(c, count, [&in, turn = how.turn](int i) { return turned(Hues(in.at(i)), turn); });
  else
    c = in;
  if (how.turn != 0 && how.keepsLuma)
    fill(c, count, [&](int i) { return withLuma(c.at(i), luma(in.at(i))); });
  if (how.saturation != 0)
    fill(c, count, [&, saturation = how.saturation](int i) { return saturated(c.at(i), saturation); });
  if (how.lightness != 0)
    fill(c, count, [&, lightness = how.lightness](int i) { return lightened(c.at(i), lightness); });
  if (how.tintAmount != 0)
    tint(c, count, how);
  if (how.isLimited)
    fill(c, count, [&](int i) { return towards(in.at(i), c.at(i), share(Hues(in.at(i)), how)); });
}

} // namespace

void recolorRow(const _color_t *in, _color_t *out, int width, const Recoloring &how) {
  constexpr uint32_t kAlpha = 0xFF000000;
  Stretch before, after;
  for (int x = 0; x < width; x += kStretch) {
    const int count = width - x < kStretch ? width - x : kStretch;
    forEachVector<I16xN>(count, [&](int i, int n) { before.put(i, channelsOf(loadPair(in + x + i, n))); });
    recolor(before, after, count, how);
    forEachVector<I16xN>(count, [&](int i, int n) {
      const PixelPair old = loadPair(in + x + i, n);
      const RgbLanes c = after.at(i);
      storePair(out + x + i, {firstPixels(c) | (old.first & kAlpha), secondPixels(c) | (old.second & kAlpha)},
                n);
    });
  }
}

} // namespace zol::ZOL_LEVEL
