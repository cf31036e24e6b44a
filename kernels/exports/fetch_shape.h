// Geometries as hosts hand them over, moved and turned on the way.
#pragma once

#include "frame/zol.h"
#include "kernels/shape/shape_segments.h"

namespace zol {

/// x' = xx x + xy y + dx, y' = yx x + yy y + dy.
struct Affine {
  double xx = 1, xy = 0, yx = 0, yy = 1, dx = 0, dy = 0;

  static Affine moving(double dx, double dy) { return {1, 0, 0, 1, dx, dy}; }
};

/// What a geometry is fetched for: the host closes open contours for filling alone.
enum class ShapeUse { drawing, filling };

/// Adds the segments of the geometry as it is at `time`. False when the host fails or memory runs out.
bool fetchShape(t_ZoHostInfo *host, void *geometry, double time, ShapeUse use, const Affine &matrix,
                ShapeSegments &segments);

} // namespace zol
