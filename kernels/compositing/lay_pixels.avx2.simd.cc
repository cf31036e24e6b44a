#include "kernels/compositing/lay_pixels.h"

#include "kernels/color/luma_lanes.h"
#include "kernels/compositing/over_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

// ---- Modes of a channel: l and u are 0..255, and so is what they give ----

U16xN multiplied(U16xN x, U16xN y) { return div255(x * y + 127); }
U16xN screened(U16xN x, U16xN y) { return 255 - multiplied(255 - x, 255 - y); }

/// Multiplies where u is below the middle, screens above.
U16xN hardLit(U16xN l, U16xN u) {
  const auto dark = u < 128;
  const U16xN product = multiplied(dark ? l : 255 - l, dark ? u + u : 510 - u - u);
  return dark ? product : 255 - product;
}

U16xN dodged(U16xN l, U16xN u) {
  const U16xN rest = u == 255 ? splat<U16xN>(1) : 255 - u;
  const U16xN raised = as<U16xN>(min(as<I16xN>(Divisors(rest).divide(l * 255)), splat<I16xN>(255)));
  return u == 255 ? (l == 0 ? l : splat<U16xN>(255)) : raised;
}

template <LayMode mode> U16xN blendChannels(U16xN l, U16xN u) {
  if constexpr (mode == LayMode::multiply)
    return multiplied(l, u);
  else if constexpr (mode == LayMode::screen)
    return screened(l, u);
  else if constexpr (mode == LayMode::overlay)
    return hardLit(u, l);
  else if constexpr (mode == LayMode::colorDodge)
    return dodged(l, u);
  else if constexpr (mode == LayMode::colorBurn)
    return 255 - dodged(255 - l, 255 - u);
  else if constexpr (mode == LayMode::hardLight)
    return hardLit(l, u);
  else if constexpr (mode == LayMode::softLight)
    return multiplied(255 - l, multiplied(l, u)) + multiplied(l, screened(l, u));
  else
    return l + u - 2 * multiplied(l, u); // exclusion
}

// ---- Modes of pixels; the alpha that they give is not looked at ----

template <LayMode mode> U32xN blend(U32xN lower, U32xN upper) {
  const auto l = as<U8xN>(lower), u = as<U8xN>(upper);
  if constexpr (mode == LayMode::normal)
    return upper;
  else if constexpr (mode == LayMode::darken)
    return as<U32xN>(min(l, u));
  else if constexpr (mode == LayMode::lighten)
    return as<U32xN>(max(l, u));
  else if constexpr (mode == LayMode::difference)
    return as<U32xN>(absoluteDifference(l, u));
  else if constexpr (mode == LayMode::add)
    return as<U32xN>(addSaturated(l, u));
  else if constexpr (mode == LayMode::subtract)
    return as<U32xN>(subSaturated(l, u));
  else
    return as<U32xN>(packU8(as<I16xN>(blendChannels<mode>(widenLow(l), widenLow(u))),
                            as<I16xN>(blendChannels<mode>(widenHigh(l), widenHigh(u)))));
}

/// Two vectors of pixels, which the modes by luma take at a time.
struct TwoVectors {
  TwoVectors(const _color_t *from, int count)
      : first(load<U32xN>(from, count < kLanes<U32xN> ? count : kLanes<U32xN>)),
        second(count > kLanes<U32xN> ? load<U32xN>(from + kLanes<U32xN>, count - kLanes<U32xN>) : U32xN{}) {}
  explicit TwoVectors(const RgbLanes &c) : first(firstPixels(c)), second(secondPixels(c)) {}
  [[nodiscard]] RgbLanes channels() const { return channelsOf(first, second); }

  U32xN first, second;
};

// ---- Rows ----

class Layer {
public:
  explicit Layer(const Laying &laying)
      : opacity_(as<I16xN>(splat<U32xN>(static_cast<uint32_t>(laying.opacity)))), inside_(laying.inside) {}

  [[nodiscard]] U32xN weights(U32xN upper) const {
    return as<U32xN>(mulAddPairs(as<I16xN>(upper >> 24), opacity_)) >> 12;
  }

  [[nodiscard]] U32xN laid(U32xN lower, U32xN upper, U32xN blended) const {
    const U32xN m = weights(upper);
    if (!inside_ && !allSet(lower >= 0xFF000000))
      return over(lower, upper, blended, m);
    return allSet(m == 255) ? (blended & 0x00FFFFFF) | (lower & 0xFF000000) : overOpaque(lower, blended, m);
  }

  /// Whether the upper pixels hide the lower ones.
  [[nodiscard]] bool covers(U32xN upper) const { return !inside_ && allSet(weights(upper) == 255); }

private:
  I16xN opacity_;
  bool inside_;
};

template <LayMode mode> void layRow(_color_t *lower, const _color_t *upper, int count, const Laying &laying) {
  forEachVector<U32xN>(count, [=, layer = Layer(laying)](int i, int n) {
    const auto u = load<U32xN>(upper + i, n);
    if (allSet(layer.weights(u) == 0))
      return;
    if (mode == LayMode::normal && layer.covers(u)) {
      store(lower + i, u, n);
      return;
    }
    const auto l = load<U32xN>(lower + i, n);
    store(lower + i, layer.laid(l, u, blend<mode>(l, u)), n);
  });
}

template <LayMode mode>
void layRowByLuma(_color_t *lower, const _color_t *upper, int count, const Laying &laying) {
  constexpr int kHalf = kLanes<U32xN>;
  const auto layTwo = [=, layer = Layer(laying)](int i, int n) {
    const TwoVectors l(lower + i, n), u(upper + i, n);
    if (allSet((layer.weights(u.first) | layer.weights(u.second)) == 0))
      return;
    const TwoVectors &colors = mode == LayMode::color ? u : l, &lights = mode == LayMode::color ? l : u;
    const TwoVectors blended(withLuma(colors.channels(), luma(lights.channels())));
    store(lower + i, layer.laid(l.first, u.first, blended.first), n < kHalf ? n : kHalf);
    if (n > kHalf)
      store(lower + i + kHalf, layer.laid(l.second, u.second, blended.second), n - kHalf);
  };
  int i = 0;
  for (; i + 2 * kHalf <= count; i += 2 * kHalf)
    layTwo(i, 2 * kHalf);
  if (i < count)
    layTwo(i, count - i);
}

using LayRow = void (*)(_color_t *lower, const _color_t *upper, int count, const Laying &laying);

template <int... modes> LayRow rowOf(LayMode mode, std::integer_sequence<int, modes...> /*by channel*/) {
  constexpr LayRow kRows[] = {layRow<static_cast<LayMode>(modes)>..., layRowByLuma<LayMode::color>,
                              layRowByLuma<LayMode::luminosity>};
  return kRows[static_cast<int>(mode)];
}

} // namespace

void layPixels(_color_t *lower, const _color_t *upper, int count, const Laying &laying) {
  rowOf(laying.mode, std::make_integer_sequence<int, kLayModes - 2>())(lower, upper, count, laying);
}

} // namespace zol::ZOL_LEVEL
