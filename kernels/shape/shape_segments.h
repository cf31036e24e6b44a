// The segments of a geometry, collected from the host.
#pragma once

#include "frame/zol.h"

#include <cstddef>

namespace zol {

/// One coordinate of a cubic: its values at both ends and its Hermite tangents there.
struct HermiteCubic {
  double q0, q1, t0, t1;
};

/// The value at t by the Hermite basis; at 0 and 1 the ends themselves, without arithmetic.
double valueAt(const HermiteCubic &cubic, double t);

/// Coefficients of ((a t + b) t + c) t + d.
struct Polynomial {
  double a, b, c, d;
};
Polynomial polynomialOf(const HermiteCubic &cubic);

/// Roots of the derivative, in the order of the formula; a discriminant within the tolerance of 0 counts
/// as one root. Without a cubic term the roots are not finite.
struct Extrema {
  int count;
  double t[2];
};
Extrema extremaOf(const Polynomial &polynomial, double tolerance);

struct ShapeSegment {
  HermiteCubic x, y;
};

/// The segments of one geometry, moved by the offset as they arrive (handles are not moved).
class ShapeFillContext {
public:
  ShapeFillContext(double xOffset, double yOffset) : xOffset_(xOffset), yOffset_(yOffset) {}
  ~ShapeFillContext();
  ShapeFillContext(const ShapeFillContext &) = delete;
  ShapeFillContext &operator=(const ShapeFillContext &) = delete;

  /// Fetches the geometry's segments; false when the host fails or memory runs out.
  bool fetch(t_ZoHostInfo *host, void *geometry, double time);

  [[nodiscard]] size_t count() const { return count_; }
  [[nodiscard]] const ShapeSegment *begin() const { return segments_; }
  [[nodiscard]] const ShapeSegment *end() const { return segments_ + count_; }

private:
  static int addSegmentToShape(void *context, const double P0[2], const double P1[2], const double H0[2],
                               const double H1[2]);
  bool grow();

  double xOffset_, yOffset_;
  ShapeSegment *segments_ = nullptr;
  size_t count_ = 0, capacity_ = 0;
};

} // namespace zol
