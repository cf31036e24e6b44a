#include "host/geometry/geometry.h"

#include <algorithm>
#include <cmath>

namespace zol::host {

Matrix operator*(const Matrix &outer, const Matrix &inner) {
  const Matrix &m = outer, &n = inner;
  return {m.a * n.a + m.c * n.b, m.b * n.a + m.d * n.b,       m.a * n.c + m.c * n.d,
          m.b * n.c + m.d * n.d, m.a * n.e + m.c * n.f + m.e, m.b * n.e + m.d * n.f + m.f};
}

std::optional<Segment> Contour::closingLine() const {
  const double *from = segments.back().P1, *to = segments.front().P0;
  if (from[0] == to[0] && from[1] == to[1])
    return std::nullopt;
  const double x = (to[0] - from[0]) / 3, y = (to[1] - from[1]) / 3;
  return Segment{{from[0], from[1]}, {to[0], to[1]}, {x, y}, {-x, -y}};
}

Box Geometry::box() const {
  if (contours.empty())
    return {};
  const Segment &first = contours[0].segments[0];
  double low[2] = {first.P0[0], first.P0[1]};
  double high[2] = {low[0], low[1]};
  for (const Contour &contour : contours)
    for (const Segment &segment : contour.segments)
      for (int axis = 0; axis < 2; ++axis) {
        const auto include = [&](double value) {
          low[axis] = std::min(low[axis], value);
          high[axis] = std::max(high[axis], value);
        };
        include(segment.P0[axis]);
        include(segment.P1[axis]);
        double parameters[2];
        for (int i = extrema(segment, axis, parameters); i-- > 0;) {
          double point[2];
          pointAt(segment, parameters[i], point);
          include(point[axis]);
        }
      }
  return {low[0], low[1], high[0], high[1]};
}

Geometry Geometry::transformed(const Matrix &m) const {
  const auto apply = [&m](double *vector, double e, double f) {
    const double x = vector[0], y = vector[1];
    vector[0] = m.a * x + m.c * y + e;
    vector[1] = m.b * x + m.d * y + f;
  };
  Geometry result = *this;
  for (Contour &contour : result.contours)
    for (Segment &segment : contour.segments) {
      apply(segment.P0, m.e, m.f);
      apply(segment.P1, m.e, m.f);
      apply(segment.H0, 0, 0);
      apply(segment.H1, 0, 0);
    }
  return result;
}

void pointAt(const Segment &segment, double t, double point[2]) {
  const double s = 1 - t;
  for (int axis = 0; axis < 2; ++axis) {
    const double control0 = segment.P0[axis] + segment.H0[axis],
                 control1 = segment.P1[axis] + segment.H1[axis];
    point[axis] = s * s * s * segment.P0[axis] + 3 * s * s * t * control0 + 3 * s * t * t * control1 +
                  t * t * t * segment.P1[axis];
  }
}

int extrema(const Segment &segment, int axis, double found[2]) {
  constexpr double kNearEnd = 1e-9;
  // A third of the derivative: a t^2 + b t + c.
  const double d0 = segment.H0[axis], d2 = -segment.H1[axis];
  const double d1 = (segment.P1[axis] + segment.H1[axis]) - (segment.P0[axis] + segment.H0[axis]);
  const double a = d0 - 2 * d1 + d2, b = 2 * (d1 - d0), c = d0;
  const double discriminant = b * b - 4 * a * c;
  if (!(discriminant > 0))
    return 0; // none, or a point of inflection
  const double q = -0.5 * (b + std::copysign(std::sqrt(discriminant), b));
  int count = 0;
  for (const double t : {q / a, c / q})
    if (t > kNearEnd && t < 1 - kNearEnd)
      found[count++] = t;
  return count;
}

} // namespace zol::host
