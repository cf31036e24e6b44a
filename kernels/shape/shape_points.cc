#include "kernels/shape/shape_points.h"

#include "frame/convert.h"

namespace zol {

ShapePoints::ShapePoints(const ShapeSegments &segments, int top, int rows)
    : top_(top), rows_(rows), lines_(segments, LineKind::rows, top, rows) {
  for (int i = 0; lines_ && i < rows; ++i)
    sortCrossings(lines_[i]);
}

bool ShapePoints::has(double x, double y) const {
  const int64_t row = int64_t{truncate(y)} - top_;
  return row >= 0 && row < rows_ && isInside(lines_[static_cast<int>(row)], x);
}

} // namespace zol
