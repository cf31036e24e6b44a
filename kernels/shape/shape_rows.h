// From the edge coverages of one row of pixels to the blended row.
#pragma once

#include "frame/zol.h"
#include "kernels/shape/shape_crossings.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// Coverages (0 to 255) of the top and bottom edges of one row of pixels; both are 0 outside
/// [begin, end).
struct RowEdges {
  const uint8_t *top, *bottom;
  int begin, end;
};

/// Sets the alpha of `width` pixels to the coverage times the colour's alpha and blends their colours with
/// it. `columns` are the spans of the width + 1 lines between the columns, from which the coverages of left
/// and right edges are taken; spans that end above `row` are dropped from their fronts, so that rows must
/// come in ascending order.
ZOL_LEVELS_TO(avx2, void blendShapeRow(_color_t *pixels, int width, int row, const RowEdges *edges,
                                       CrossingLine *columns, unsigned colour);)

} // namespace zol
