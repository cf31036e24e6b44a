// Which points lie inside a shape.
#pragma once

#include "kernels/shape/shape_crossings.h"

namespace zol {

/// Finds once what crosses the scanlines from `top` on, to be asked often.
class ShapePoints {
public:
  /// Tests as false afterwards when memory ran out.
  ShapePoints(const ShapeSegments &segments, int top, int rows);

  explicit operator bool() const { return static_cast<bool>(lines_); }

  /// Whether the point lies inside on its scanline, borders included. False for every point of a scanline
  /// that is not among those of the beginning.
  [[nodiscard]] bool has(double x, double y) const;

private:
  int top_, rows_;
  CrossingLines lines_;
};

} // namespace zol
