// Drawing contours, as SVG's path commands do.
#pragma once

#include "host/geometry/geometry.h"

namespace zol::host {

struct Point {
  double x = 0, y = 0;
};

inline Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
inline Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
inline Point operator*(double s, Point a) { return {s * a.x, s * a.y}; }
inline bool operator==(Point a, Point b) { return a.x == b.x && a.y == b.y; }

/// Adds contours to a geometry. What has no length is left out.
class Outline {
public:
  explicit Outline(Geometry &geometry) : geometry_(geometry) {}

  [[nodiscard]] Point current() const { return current_; }

  /// Ends a contour, which stays open, and begins another.
  void moveTo(Point to);
  /// Draws a line to the contour's start and ends it; the next one begins there.
  void close();
  void lineTo(Point to);
  void cubicTo(Point control0, Point control1, Point to);
  void quadraticTo(Point control, Point to);
  /// An arc of an ellipse whose first axis is turned by `degrees`, within 5e-6 of its radius.
  void arcTo(double rx, double ry, double degrees, bool large, bool sweep, Point to);

private:
  void add(Point to, Point h0, Point h1);

  Geometry &geometry_;
  bool drawing_ = false; // the last contour goes on
  Point start_, current_;
};

} // namespace zol::host
