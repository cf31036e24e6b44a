#include "kernels/warp/warp_row.h"

#include "kernels/warp/warp_rows.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

/// Projective maps have a footprint for so many pixels, from a multiple of it on.
constexpr int kFootprintPixels = 16;
static_assert(kMostProbed % kFootprintPixels == 0);

/// Asks for what rows further down read, of an affine map: along slanting lines the processor does not
/// foresee it.
void prefetchBelow(const WarpSource &source, const WarpMap &map, const int *u, const int *v, int count) {
  constexpr int kRowsBelow = 8, kStep = 8, kFar = 1000;
  const auto &[a, b, g] = map.toSource().rows;
  const double x = a[1] * kRowsBelow, y = b[1] * kRowsBelow;
  if (!(std::abs(x) <= kFar && std::abs(y) <= kFar))
    return;
  const int right = static_cast<int>(x), down = static_cast<int>(y);
  for (int i = 0; i < count; i += kStep) {
    const int column = (u[i] >> 8) + right, row = (v[i] >> 8) + down;
    if (static_cast<unsigned>(column) < static_cast<unsigned>(source.width) &&
        static_cast<unsigned>(row) < static_cast<unsigned>(source.height))
      __builtin_prefetch(source.pixels + ptrdiff_t{row} * source.step + column);
  }
}

/// Of places of pixels x and on, which lie between two multiples of kMostProbed.
void takeProbes(const WarpSource &source, const WarpMap &map, int y, int x, WarpFilter filter, const int *u,
                const int *v, int count, _color_t *out) {
  const auto take = ZOL_SELECT(probe);
  if (map.isAffine())
    return take(source, map.footprintAt(x, y), filter, map.isUpright(), u, v, count, out);
  Footprint footprints[kMostProbed / kFootprintPixels]; // all at first: none waits for the one before
  const int first = x & -kFootprintPixels;
  for (int k = 0; first + kFootprintPixels * k < x + count; ++k) {
    const int middle = first + kFootprintPixels * k + kFootprintPixels / 2;
    footprints[k] = map.footprintAt(middle, y);
  }
  for (int i = 0; i < count;) {
    const int k = (x + i - first) / kFootprintPixels;
    const int end = std::min(count, first + kFootprintPixels * (k + 1) - x);
    take(source, footprints[k], filter, false, u + i, v + i, end - i, out + i);
    i = end;
  }
}

uint8_t faded(uint8_t alpha, int coverage, int opacity) {
  return static_cast<uint8_t>((alpha * coverage * opacity + (1 << 19)) >> 20);
}

} // namespace

int heldWithin(int place, int size, WarpBeyond beyond) {
  if (beyond == WarpBeyond::extend)
    return std::clamp(place, 0, size - 1);
  const int period = beyond == WarpBeyond::mirror ? 2 * size : size;
  const int rest = place % period, within = rest < 0 ? rest + period : rest;
  return within < size ? within : period - 1 - within;
}

_color_t pixelOf(const WarpSource &source, int x, int y) {
  const int column = heldWithin(x, source.width, source.beyond);
  const int row = heldWithin(y, source.height, source.beyond);
  _color_t pixel = source.pixels[ptrdiff_t{row} * source.step + column];
  if (source.opaque)
    pixel.a = 255;
  return pixel.a != 0 ? pixel : _color_t{};
}

void warpPixels(const WarpSource &source, const WarpMap &map, int y, int x0, int x1, WarpFilter filter,
                _color_t *out) {
  int u[kMostProbed], v[kMostProbed];
  const auto find = ZOL_SELECT(findPlaces);
  const bool slants = map.isAffine() && map.toSource().rows[1][0] != 0 && map.toSource().rows[1][1] != 0;
  for (int x = x0; x < x1;) {
    const int end = std::min(x1, (x & -kMostProbed) + kMostProbed), count = end - x;
    find(map, y, x, count, u, v);
    if (slants)
      prefetchBelow(source, map, u, v, count);
    if (filter == WarpFilter::pixels)
      ZOL_SELECT(pickEach)(source, u, v, count, out);
    else
      takeProbes(source, map, y, x, filter, u, v, count, out);
    out += count;
    x = end;
  }
}

void warpRow(const WarpSource &source, const WarpMap &map, int y, int x0, int x1, WarpFilter filter,
             int opacity, _color_t *out) {
  const Span visible = map.visible(y, x0, x1);
  _color_t *const row = out - x0; // counted from column 0
  std::fill(row + x0, row + visible.begin, _color_t{});
  std::fill(row + visible.end, row + x1, _color_t{});
  if (visible.begin == visible.end)
    return;
  if (map.isShift()) {
    const auto &[a, b, g] = map.toSource().rows;
    const int left = visible.begin + static_cast<int>(std::lround(a[2])),
              top = y + static_cast<int>(std::lround(b[2]));
    const _color_t *from = source.pixels + ptrdiff_t{top} * source.step + left;
    const auto copy = source.opaque ? ZOL_SELECT(copyOpaque) : ZOL_SELECT(copyVisible);
    copy(from, visible.end - visible.begin, row + visible.begin);
  } else {
    warpPixels(source, map, y, visible.begin, visible.end, filter, row + visible.begin);
  }
  const Span whole = map.whole(y, visible);
  const auto cut = [&](int begin, int end) {
    for (int x = begin; x < end; ++x) {
      row[x].a = faded(row[x].a, map.coverage(x, y), opacity);
      if (row[x].a == 0)
        row[x] = {};
    }
  };
  cut(visible.begin, whole.begin);
  if (opacity < 4096)
    ZOL_SELECT(fade)(row + whole.begin, whole.end - whole.begin, opacity);
  cut(whole.end, visible.end);
}

} // namespace zol
