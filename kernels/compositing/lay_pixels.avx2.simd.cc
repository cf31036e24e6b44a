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
  else if constexpr (mode == LayMode::color)
    return firstPixels(withLuma(channelsOf(upper, upper), luma(channelsOf(lower, lower))));
  else if constexpr (mode == LayMode::luminosity)
    return blend<LayMode::color>(upper, lower);
  else
    return as<U32xN>(packU8(as<I16xN>(blendChannels<mode>(widenLow(l), widenLow(u))),
                            as<I16xN>(blendChannels<mode>(widenHigh(l), widenHigh(u)))));
}

// ---- Rows ----

template <LayMode mode> void layRow(_color_t *lower, const _color_t *upper, int count, const Laying &laying) {
  const auto opacity = as<I16xN>(splat<U32xN>(static_cast<uint32_t>(laying.opacity)));
  const bool inside = laying.inside;
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto u = load<U32xN>(upper + i, n);
    const auto m = as<U32xN>(mulAddPairs(as<I16xN>(u >> 24), opacity)) >> 12;
    if (allSet(m == 0))
      return;
    if (mode == LayMode::normal && !inside && allSet(m == 255)) {
      store(lower + i, u, n);
      return;
    }
    const auto l = load<U32xN>(lower + i, n);
    const U32xN blended = blend<mode>(l, u);
    store(lower + i, inside || allSet(l >= 0xFF000000) ? overOpaque(l, blended, m) : over(l, u, blended, m),
          n);
  });
}

using LayRow = void (*)(_color_t *lower, const _color_t *upper, int count, const Laying &laying);

template <int... modes> LayRow rowOf(LayMode mode, std::integer_sequence<int, modes...> /*all*/) {
  constexpr LayRow kRows[] = {layRow<static_cast<LayMode>(modes)>...};
  return kRows[static_cast<int>(mode)];
}

} // namespace

void layPixels(_color_t *lower, const _color_t *upper, int count, const Laying &laying) {
  rowOf(laying.mode, std::make_integer_sequence<int, kLayModes>())(lower, upper, count, laying);
}

} // namespace zol::ZOL_LEVEL
