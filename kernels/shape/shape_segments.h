// The segments of a geometry, as many as come.
#pragma once

#include "kernels/shape/cubic.h"
#include "kernels/simd/growing.h"

namespace zol {

struct ShapeSegment {
  HermiteCubic x, y;
};

using ShapeSegments = Growing<ShapeSegment>;

} // namespace zol
