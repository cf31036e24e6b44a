// Projective maps of the plane.
#pragma once

namespace zol {

struct Point {
  double x, y;
};

/// (x, y) goes to (X / D, Y / D): the three rows times (x, y, 1). A multiple of all entries is the same map.
struct Projection {
  double rows[3][3];

  static constexpr Projection scaled(double x, double y) { return {{{x, 0, 0}, {0, y, 0}, {0, 0, 1}}}; }
  static constexpr Projection moved(double x, double y) { return {{{1, 0, x}, {0, 1, y}, {0, 0, 1}}}; }

  /// The rectangle from (0, 0) to (width, height) goes to the corners: upper left, upper right, lower right,
  /// lower left.
  static Projection ofRectangle(double width, double height, const Point (&corners)[4]);

  /// The way back; of a map that has none, what has none either.
  [[nodiscard]] Projection inverse() const;
  [[nodiscard]] double determinant() const;

  /// D of a point.
  [[nodiscard]] double divisor(const Point &p) const {
    return rows[2][0] * p.x + (rows[2][1] * p.y + rows[2][2]);
  }
  [[nodiscard]] Point of(const Point &p) const;
};

/// First `b`, then `a`.
Projection operator*(const Projection &a, const Projection &b);

} // namespace zol
