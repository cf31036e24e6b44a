// Places that a plane of values moves, row by row.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"
#include "kernels/warp/warp_rows.h"

#include <cstdint>

namespace zol {

enum class MapChannel { red, green, blue, alpha, luma };
inline constexpr int kMapChannels = 5;

/// How columns or rows are moved: place i lies at step i + (perUnit value + rest), in 1/256 pixel.
struct PlaceLine {
  double step, perUnit, rest;
};

/// Where pixels of a row lie, in 1/256 pixel, and one more behind them. There is room for a vector behind
/// that, which is read.
struct Places {
  static constexpr int kRoom = 1 + 16;

  int *u, *v;
};

// mapRow        a channel of pixels, 255 times as much; `neutral` where alpha is 0.
// placeRow      begin + step i + (perUnit (plus[i] - minus[i]) + rest), rounded to the nearest and within
//               40000 pixels.
// findRadii     radii across and down of the probes, in 1/64 pixel, that do for what lies from each place to
//               the next and from row to row. Where one probe does not do they are the least; such columns
//               are listed in `rest` with their steps, and their number is answered. `count` is kMostProbed
//               at most; radii are written in whole vectors.
// fadeBeyond    takes alpha away within a pixel beyond the outermost pixels of a source of that size.
ZOL_LEVELS_TO(avx2, void mapRow(const _color_t *pixels, MapChannel channel, uint16_t neutral,
                                uint16_t *values, int count);
              void placeRow(const PlaceLine &line, double begin, double step, const uint16_t *plus,
                            const uint16_t *minus, int *places, int count);
              int findRadii(const Places &places, const Places &above, const Places &below, int *radiiAcross,
                            int *radiiDown, int *rest, PlaceSteps &steps, int count);
              void fadeBeyond(const Places &places, int width, int height, _color_t *pixels, int count);)

} // namespace zol
