// Shapes as contours of points, as they are drawn: to be stroked, or walked along by length.
#pragma once

#include "kernels/shape/shape_segments.h"
#include "kernels/simd/growing.h"

#include <cstdint>

namespace zol {

/// A point that the curve is drawn through, and how it is reached from the one before.
struct OutlinePoint {
  double x, y;
  double way;       ///< length along the contour to here
  uint32_t segment; ///< that ends here or goes on
  double t;         ///< its parameter here
};

/// Points from `first` on. The last one of a closed contour stands where its first one does.
struct Contour {
  size_t first, count; ///< at least 2 points
  bool closed;
};

/// A place on the curve itself, and the direction there, of length 1.
struct OutlinePlace {
  double x, y, alongX, alongY;
};

/// Contours of segments that join: one begins where a segment does not start at the end of the one before,
/// and is closed where it ends at its beginning. Lines between the points stay within 0.05 pixels of the
/// curves. Segments with coordinates that are not finite are left out.
class Outline {
public:
  /// Tests as false afterwards when memory ran out. The segments must outlive it.
  explicit Outline(const ShapeSegments &segments);

  explicit operator bool() const { return complete_; }
  [[nodiscard]] const Growing<Contour> &contours() const { return contours_; }
  [[nodiscard]] const OutlinePoint *points(const Contour &contour) const {
    return points_.data() + contour.first;
  }
  [[nodiscard]] double length(const Contour &contour) const {
    return points_[contour.first + contour.count - 1].way;
  }
  /// Where the way is reached; the ends before and behind them.
  [[nodiscard]] OutlinePlace at(const Contour &contour, double way) const;
  /// The first point of the contour, from 1 on, that lies behind the way; the last one where none does.
  [[nodiscard]] size_t pointBehind(const Contour &contour, double way) const;

private:
  bool trace(const ShapeSegment &segment, uint32_t index);

  const ShapeSegments &segments_;
  Growing<OutlinePoint> points_;
  Growing<Contour> contours_;
  bool complete_ = false;
};

} // namespace zol
