#pragma once

#include "host/geometry/geometry.h"
#include "host/model/curve.h"
#include "host/model/shape.h"

#include <memory>
#include <vector>

namespace zol::host {

struct GeometryKey {
  double time; ///< in seconds
  Geometry geometry;
  Course course = Course::line;
};

/// A geometry that goes from key to key, point by point; at least one key. Throws GeometryError where two
/// keys have not the same number of contours and segments.
std::unique_ptr<Shape> shapeOf(const std::vector<GeometryKey> &keys);

} // namespace zol::host
