#include "kernels/warp/place_rows.h"

#include "kernels/color/luma_lanes.h"
#include "kernels/warp/taps.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kOne = 65536; // of a length of one pixel, squared

I32xN held(I32xN step) {
  constexpr int kLongest = PlaceSteps::kLongest;
  return max(min(step, splat<I32xN>(kLongest)), splat<I32xN>(-kLongest));
}

/// The halves of a lane.
I16xN pairs(I32xN p, I32xN q) { return as<I16xN>((p & 0xFFFF) | q << 16); }

/// In 1/64 pixel, of a square of a length.
I32xN radius(F32xN square) {
  const F32xN length = squareRoot(square) * (64.0F / kPhases);
  const I32xN whole = convert<I32xN>(length);
  return convert<F32xN>(whole) < length ? whole + 1 : whole;
}

} // namespace

void mapRow(const _color_t *pixels, MapChannel channel, uint16_t neutral, uint16_t *values, int count) {
  const int shifts[] = {16, 8, 0, 24, 0};
  const int shift = shifts[static_cast<int>(channel)];
  forEachVector<U16xN>(count, [=](int i, int n) {
    const PixelPair pair = loadInOrder(pixels + i, n);
    const I16xN value =
        channel == MapChannel::luma ? luma(channelsOf(pair)) : channelOf(pair.first, pair.second, shift);
    const auto none = channelOf(pair.first, pair.second, 24) == 0;
    store(values + i, none ? splat<U16xN>(neutral) : as<U16xN>(value) * 255, n);
  });
}

void placeRow(const PlaceLine &line, double begin, double step, const uint16_t *plus, const uint16_t *minus,
              int *places, int count) {
  constexpr int kWide = kLanes<F64xN>;
  using Values = Vector<uint16_t, kWide>;
  using Whole = Vector<int32_t, kWide>;
  const auto far = splat<F64xN>(40000.0 * kPhases);
  const PlaceLine by = line; // no store changes it
  F64xN columns;
  for (int i = 0; i < kWide; ++i)
    columns[i] = i;
  forEachVector<F64xN>(count, [=](int i, int n) {
    const auto value = convert<F64xN>(convert<Whole>(load<Values>(plus + i, n)) -
                                      convert<Whole>(load<Values>(minus + i, n)));
    const F64xN place = begin + (columns + i) * step + (value * by.perUnit + by.rest);
    store(places + i, convert<Whole>(floor(max(min(place, far), -far) + 0.5)), n);
  });
}

int findRadii(const Places &places, const Places &above, const Places &below, int *radiiAcross,
              int *radiiDown, int *rest, PlaceSteps &steps, int count) {
  constexpr int kWide = kLanes<I32xN>;
  const auto one = splat<F32xN>(kOne);
  int left = 0;
  for (int i = 0; i < count; i += kWide) {
    const auto between = [i](const int *from, const int *to) {
      return held(load<I32xN>(to + i) - load<I32xN>(from + i));
    };
    const I32xN px = between(places.u, places.u + 1), py = between(places.v, places.v + 1),
                qx = between(above.u, below.u), qy = between(above.v, below.v);
    const I16xN x = pairs(px, qx), y = pairs(py, qy);
    const F32xN across = max(convert<F32xN>(mulAddPairs(x, x)), one);
    const F32xN down = max(convert<F32xN>(mulAddPairs(y, y)), one);
    const F32xN both = convert<F32xN>(mulAddPairs(x, y));
    // One probe is as wide as two pixels at most, and lies along the axes.
    const F32xN most = max(across, down);
    const auto fits =
        (most <= 4.0F * kOne) & ((most <= 1.0F * kOne) | (both * both * 25.0F <= across * down));
    const auto least = splat<I32xN>(kLeastRadius);
    store(radiiAcross + i, select(fits, radius(across), least));
    store(radiiDown + i, select(fits, radius(down), least));
    if (!allSet(fits)) {
      const ByteMask bits = byteMask(fits);
      for (int k = 0; k < kWide && i + k < count; ++k)
        if ((bits >> 4 * k & 1) == 0) {
          steps.rightU[left] = px[k];
          steps.rightV[left] = py[k];
          steps.downU[left] = qx[k];
          steps.downV[left] = qy[k];
          rest[left++] = i + k;
        }
    }
  }
  return left;
}

void fadeBeyond(const Places &places, int width, int height, _color_t *pixels, int count) {
  const I32xN right = splat<I32xN>(kPhases * (width - 1)), bottom = splat<I32xN>(kPhases * (height - 1));
  const auto shareOf = [](I32xN place, I32xN last) {
    return max(min(min(place, last - place) + kPhases, splat<I32xN>(kPhases)), I32xN{});
  };
  forEachVector<U32xN>(count, [=](int i, int n) {
    const I32xN across = shareOf(load<I32xN>(places.u + i), right),
                down = shareOf(load<I32xN>(places.v + i), bottom);
    if (allSet((across & down) == kPhases))
      return;
    const I32xN share = (mulAddPairs(as<I16xN>(across), as<I16xN>(down)) + 128) >> 8;
    const auto p = load<U32xN>(pixels + i, n);
    const U32xN alpha = (as<U32xN>(mulAddPairs(as<I16xN>(p >> 24), as<I16xN>(share))) + 128) >> 8;
    store(pixels + i, alpha > 0 ? (p & 0x00FFFFFF) | alpha << 24 : U32xN{}, n);
  });
}

} // namespace zol::ZOL_LEVEL
